#include "stars/cell_sky.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr double kClip = 3.0;        // deviations
constexpr double kCoarse = 1.5;      // steps of whole numbers: the next ones always count
constexpr double kClipped = 0.98477; // deviation of what clipping leaves of normal samples
constexpr double kCrowding = 0.93;   // clipping that leaves less of the deviation has met stars
constexpr double kSkewed = 0.3;      // deviations between mean and median beyond which the mode is not to be told

/// Mean and deviation of samples; they are taken from `centre`, so that no digits are lost.
std::pair<double, double> MeanAndDeviation(const float* first, const float* last, double centre)
{
    double sum = 0.0;
    double squares = 0.0;
    for (const float* s = first; s != last; ++s) {
        const double v = *s - centre;
        sum += v;
        squares += v * v;
    }
    const auto count = static_cast<double>(last - first);
    const double mean = sum / count;
    return {centre + mean, std::sqrt(std::max(0.0, squares / count - mean * mean))};
}

/// The median deviation from the median, both of which the sorted samples show.
double MedianDeviation(const std::vector<float>& sorted)
{
    const double median = sorted[sorted.size() / 2];
    std::size_t low = 0;
    std::size_t high = sorted.size();
    while (high - low > sorted.size() / 2 + 1) { // the farther end goes
        if (median - sorted[low] > sorted[high - 1] - median) {
            ++low;
        } else {
            --high;
        }
    }
    return std::max(median - sorted[low], sorted[high - 1] - median);
}

} // namespace

double StepOf(const std::vector<float>& sorted)
{
    constexpr float kNone = std::numeric_limits<float>::infinity();
    float step = kNone;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const float difference = sorted[i] - sorted[i - 1];
        step = difference > 0.0F ? std::min(step, difference) : step;
    }
    return step == kNone ? 0.0 : step;
}

CellSky ClippedSky(const std::vector<float>& sorted, double step)
{
    const float* low = sorted.data();
    const float* high = low + sorted.size();
    double median = sorted[sorted.size() / 2];
    const double unclipped = MeanAndDeviation(low, high, median).second;
    double mean = median;
    double noise = std::max(kMedianToSigma * MedianDeviation(sorted), kStepNoise * step);
    for (std::ptrdiff_t count = -1; count != high - low;) {
        count = high - low;
        const double reach = std::max(kClip * noise, kCoarse * step);
        low = std::lower_bound(low, high, median - reach);
        high = std::upper_bound(low, high, median + reach);
        median = low[(high - low) / 2];
        std::tie(mean, noise) = MeanAndDeviation(low, high, median);
        noise /= kClipped;
    }
    const bool isCrowded = noise < kCrowding * unclipped && noise > step;
    const bool isSkewed = std::fabs(mean - median) > kSkewed * noise;
    const double mode = isSkewed ? median : 2.5 * median - 1.5 * mean;
    return {isCrowded ? mode : mean, noise > 0.0 ? std::max(noise, kStepNoise * step) : 0.0, step};
}

} // namespace corvane::stars
