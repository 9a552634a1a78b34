#include "stars/psf_samples.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <numeric>

#include "corvane/core/kernel_weights.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr double kFarRest = 3.0; // deviations
constexpr double kSkyFrom = 0.8; // of a star's square, where there is sky
constexpr double kSure = 4.0;    // variances of the mean that half of it is believed for
constexpr int kRestTaps = 6;

/// What a profile leaves of a star, over its peak, between its samples.
class StarRest {
public:
    StarRest(const PsfStar& star, const PsfProfile& profile)
        : star_(star), variance_(star.variance / (star.peak * star.peak))
    {
        std::vector<double> outer;
        for (int dy = -star.reach; dy <= star.reach; ++dy) {
            for (int dx = -star.reach; dx <= star.reach; ++dx) {
                rests_.push_back(star.RestAt(dx, dy, profile) / star.peak);
                if (dx * dx + dy * dy > kSkyFrom * kSkyFrom * star.reach * star.reach && !std::isnan(rests_.back())) {
                    outer.push_back(rests_.back());
                }
            }
        }
        const double sky = MedianOf(outer); // a profile that does not suit the star has moved its sky
        std::for_each(rests_.begin(), rests_.end(), [=](double& rest) { rest -= sky; });
    }

    /// Of one sample, for the mean over the stars.
    double Variance() const { return variance_; }

    /// At a distance from the middle; NaN where a sample is missing.
    double At(int dx, int dy) const
    {
        const double x = star_.reach + star_.x + dx;
        const double y = star_.reach + star_.y + dy;
        const int left = static_cast<int>(std::floor(x)) - kRestTaps / 2 + 1;
        const int top = static_cast<int>(std::floor(y)) - kRestTaps / 2 + 1;
        if (left < 0 || top < 0 || left + kRestTaps > star_.Side() || top + kRestTaps > star_.Side()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
        double across[kRestTaps];
        double down[kRestTaps];
        const KernelWeights& weights = KernelWeights::Of(Interpolation::kLanczos3);
        weights.Set<kRestTaps>(x - std::floor(x), across);
        weights.Set<kRestTaps>(y - std::floor(y), down);
        double sum = 0.0;
        for (int row = 0; row < kRestTaps; ++row) {
            const double* const from = rests_.data() + static_cast<std::ptrdiff_t>(top + row) * star_.Side() + left;
            sum += down[row] * std::inner_product(from, from + kRestTaps, across, 0.0);
        }
        return sum;
    }

private:
    const PsfStar& star_;
    double variance_;
    std::vector<double> rests_;
};

/// The mean by weight of what stars leave at a place, as far as it rises out of its noise.
double MeanRest(const std::vector<StarRest>& stars, int dx, int dy)
{
    std::vector<double> values;
    std::transform(stars.begin(), stars.end(), std::back_inserter(values),
                   [=](const StarRest& star) { return star.At(dx, dy); });
    std::vector<double> there;
    std::copy_if(values.begin(), values.end(), std::back_inserter(there), [](double v) { return !std::isnan(v); });
    const RobustLevel level = MeasureLevel(std::move(there));
    double sum = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double most = kFarRest * std::sqrt(level.deviation * level.deviation + stars[i].Variance());
        const bool counts = std::fabs(values[i] - level.median) <= most; // NaN does not
        sum += counts ? values[i] / stars[i].Variance() : 0.0;
        weights += counts ? 1.0 / stars[i].Variance() : 0.0;
    }
    if (weights == 0.0) {
        return 0.0;
    }
    const double mean = sum / weights;
    return mean * (mean * mean / (mean * mean + kSure / weights));
}

template <class ValueAt>
PsfSamples Normalised(int size, ValueAt valueAt)
{
    std::vector<double> values;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            values.push_back(valueAt(x - size / 2, y - size / 2));
        }
    }
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    PsfSamples samples;
    std::transform(values.begin(), values.end(), std::back_inserter(samples),
                   [=](double v) { return static_cast<float>(v / sum); });
    return samples;
}

} // namespace

PsfSamples SamplesOf(const PsfProfile& profile, int size)
{
    return Normalised(size, [&](int dx, int dy) { return profile.At(dx, dy); });
}

PsfSamples SamplesOf(const std::vector<PsfStar>& stars, const PsfProfile& profile, int size)
{
    std::vector<StarRest> rests;
    std::transform(stars.begin(), stars.end(), std::back_inserter(rests),
                   [&](const PsfStar& star) { return StarRest(star, profile); });
    return Normalised(size, [&](int dx, int dy) { return profile.At(dx, dy) + MeanRest(rests, dx, dy); });
}

} // namespace corvane::stars
