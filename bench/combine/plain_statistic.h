#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "corvane/combine/row_combiner.h"

namespace corvane::bench {

/// What becomes of the values of one pixel, from its definition; the weights are for means.
inline double PlainStatistic(std::vector<double> values, const std::vector<double>& weights, CombineMethod method)
{
    const std::vector<double> inOrder = values;
    const double n = static_cast<double>(values.size());
    std::sort(values.begin(), values.end());
    const double median = values[values.size() / 2];
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / n;
    const double squares = std::accumulate(values.begin(), values.end(), 0.0,
                                           [=](double sum, double v) { return sum + (v - mean) * (v - mean); });
    const auto isKept = [&](double v) {
        return method == CombineMethod::kMedian || std::fabs(v - median) < 3.0 * std::sqrt(squares / n);
    };
    double sum = 0.0;
    double total = 0.0;
    for (std::size_t i = 0; i < inOrder.size(); ++i) {
        sum += isKept(inOrder[i]) ? weights[i] * inOrder[i] : 0.0;
        total += isKept(inOrder[i]) ? weights[i] : 0.0;
    }
    std::erase_if(values, [&](double v) { return !isKept(v); });
    return method == CombineMethod::kClippedMean ? sum / total : values[values.size() / 2];
}

} // namespace corvane::bench
