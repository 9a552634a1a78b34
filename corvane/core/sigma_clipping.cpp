#include "corvane/core/sigma_clipping.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/ascending.h"

namespace corvane {
namespace {

double Median(const std::vector<WeightedValue>& sorted)
{
    double count = 0.0;
    for (const WeightedValue& v : sorted) {
        count += v.weight;
    }
    const double middle = std::floor(count / 2.0);
    double passed = 0.0;
    const auto found = std::find_if(sorted.begin(), sorted.end() - 1,
                                    [&](const WeightedValue& v) { return (passed += v.weight) > middle; });
    return found->value;
}

} // namespace

ClipBounds SortAndClip(std::vector<WeightedValue>& values)
{
    std::sort(values.begin(), values.end(),
              [](const WeightedValue& a, const WeightedValue& b) { return Ascending()(a.value, b.value); });
    const double median = Median(values);
    const double mean = Mean(values, [](double v) { return v; });
    const double sigma = std::sqrt(Mean(values, [=](double v) { return (v - mean) * (v - mean); }));
    return {median - 3.0 * sigma, median + 3.0 * sigma};
}

} // namespace corvane
