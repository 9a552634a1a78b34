#include "stars/robust.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvane::stars {

namespace {

constexpr double kMeanToSigma = 1.2533;

} // namespace

double MedianOf(std::vector<double>& values)
{
    if (values.empty()) {
        return 0.0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

RobustLevel MeasureLevel(std::vector<double> values)
{
    const double median = MedianOf(values);
    for (double& v : values) {
        v = std::fabs(v - median);
    }
    const double deviation = kMedianToSigma * MedianOf(values);
    if (deviation > 0.0 || values.empty()) {
        return {median, deviation};
    }
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    return {median, kMeanToSigma * mean};
}

} // namespace corvane::stars
