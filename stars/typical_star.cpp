#include "stars/typical_star.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include "stars/common_width.h"
#include "stars/field_blocks.h"
#include "stars/gaussian_fit.h"
#include "stars/robust.h"
#include "stars/star_shape.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kStars = 200;
constexpr std::size_t kFewestStars = 20; // of which faint ones may be part
constexpr double kBright = 20.0;         // deviations of the sky
constexpr std::size_t kTries = 4000;
constexpr std::size_t kTogether = 64; // as long as so many are wanted
constexpr int kStampReach = 24;       // pixels
constexpr double kWindow = 1.5;
constexpr double kNarrowestWindow = 0.6;
constexpr double kWidestWindow = kStampReach / 3.0;
constexpr double kLeastSigmaBright = 0.38; // sigma of a bright star's fit
constexpr double kSigmaByNoise = 1.5;      // and this more for a peak of one deviation of the sky
constexpr double kSampled = 0.7;           // sigma from which on moments of samples tell a width
constexpr double kMostElongated = 3.0;
constexpr double kMostLost = 0.01; // of the window
constexpr int kWindowRounds = 10;
constexpr double kSettledWindow = 0.01;

/// The shape of an object through a window as wide as itself; nothing for what is no star.
std::optional<StarShape> ShapeThroughOwnWindow(const Stamp& stamp)
{
    double window = kWindow;
    for (int round = 0; round < kWindowRounds; ++round) {
        const std::optional<StarShape> shape = MeasureShape(stamp, window);
        if (!shape || shape->lost > kMostLost || shape->Width() > kWidestWindow ||
            shape->Elongation() > kMostElongated) {
            return std::nullopt;
        }
        const double next = std::max(shape->Width(), kNarrowestWindow);
        if (std::fabs(next - window) < kSettledWindow * window) {
            return shape;
        }
        window = next;
    }
    return std::nullopt;
}

struct TriedStar {
    StarShape shape;
    double sigma; ///< of the Gaussian that fits it
};

/// The median of what is asked of candidates.
template <class Ask>
double MedianOver(const std::vector<TriedStar>& candidates, Ask ask)
{
    std::vector<double> values;
    std::transform(candidates.begin(), candidates.end(), std::back_inserter(values), ask);
    return MedianOf(values);
}

std::optional<TriedStar> Try(const Maximum& maximum, const SkyMesh& sky, Stamp& stamp)
{
    stamp.MoveTo(maximum.x, maximum.y, sky.level.At(maximum.x, maximum.y));
    const std::optional<StarShape> shape = ShapeThroughOwnWindow(stamp);
    if (!shape) {
        return std::nullopt;
    }
    const auto fit = FitGaussian(stamp, std::max(shape->Width(), kNarrowestWindow));
    const double noise = sky.noise.At(maximum.x, maximum.y);
    return fit && fit->sigma >= LeastSigma(noise, fit->peak) ? std::optional(TriedStar{*shape, fit->sigma})
                                                             : std::nullopt;
}

/// What each of some maxima shows.
std::vector<std::optional<TriedStar>> TryAll(const CStlImage& image, int plane, const SkyMesh& sky,
                                             std::span<const Maximum> maxima, const Run& run)
{
    std::vector<std::optional<TriedStar>> tried(maxima.size());
    const auto tryOne = [&](int i) {
        Stamp stamp(image, plane, kStampReach);
        tried[i] = Try(maxima[i], sky, stamp);
    };
    const auto samples =
        static_cast<long long>(maxima.size()) * kWindowRounds * (2 * kStampReach + 1) * (2 * kStampReach + 1);
    platform::ForBlocks(static_cast<int>(maxima.size()), ReadersOf(image, samples, run), tryOne, [](int) {});
    return tried;
}

TypicalStar TypicalOf(std::vector<TriedStar> candidates)
{
    std::vector<double> sigmas;
    for (const TriedStar& c : candidates) {
        sigmas.push_back(c.sigma);
    }
    const double common = CommonWidth(std::move(sigmas));
    std::erase_if(candidates, [&](const TriedStar& c) { return !IsCommon(c.sigma, common); });
    return {MedianOver(candidates, [](const TriedStar& c) { return c.shape.Width(); }),
            MedianOver(candidates, [](const TriedStar& c) { return c.shape.shortest; }),
            MedianOver(candidates, [](const TriedStar& c) { return c.shape.Elongation(); }),
            MedianOver(candidates, [](const TriedStar& c) { return c.sigma / c.shape.Width(); }), common < kSampled};
}

} // namespace

double LeastSigma(double noise, double peak)
{
    return kLeastSigmaBright + kSigmaByNoise * noise / peak;
}

double TypicalStar::Fwhm(double deviation) const
{
    return kFwhmPerSigma * fit * deviation;
}

TypicalStar MeasureTypicalStar(const CStlImage& image, int plane, const SkyMesh& sky, std::vector<Maximum> maxima,
                               const Run& run)
{
    const auto isBrighter = [](const Maximum& a, const Maximum& b) { return a.excess > b.excess; };
    std::stable_sort(maxima.begin(), maxima.end(), isBrighter);
    maxima.resize(std::min(maxima.size(), kTries));
    std::vector<TriedStar> candidates;
    const auto isEnough = [&](const Maximum& maximum) {
        const bool isFaint = maximum.excess < kBright * sky.noise.At(maximum.x, maximum.y);
        return candidates.size() == kStars || (isFaint && candidates.size() >= kFewestStars);
    };
    std::span<const Maximum> left(maxima);
    while (!left.empty() && !isEnough(left.front())) {
        const auto next = left.first(std::min({kStars - candidates.size(), kTogether, left.size()}));
        const auto tried = TryAll(image, plane, sky, next, run);
        std::size_t used = 0;
        for (; used < next.size() && !isEnough(next[used]); ++used) {
            if (tried[used]) {
                candidates.push_back(*tried[used]);
            }
        }
        left = left.subspan(used);
    }
    return candidates.empty() ? TypicalStar() : TypicalOf(candidates);
}

} // namespace corvane::stars
