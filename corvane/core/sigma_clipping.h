#pragma once

#include <vector>

namespace corvane {

/// A value and how often it is there.
struct WeightedValue {
    double value;
    double weight = 1.0;
};

/// The sum of a function of the values over their number.
template <class Function>
double Mean(const std::vector<WeightedValue>& values, Function function)
{
    double sum = 0.0;
    double count = 0.0;
    for (const WeightedValue& v : values) {
        sum += function(v.value) * v.weight;
        count += v.weight;
    }
    return sum / count;
}

/// What lies strictly between two bounds.
struct ClipBounds {
    double low;
    double high;

    bool Has(double v) const { return low < v && v < high; }
};

/// Puts values in order, NaN behind all others, and returns the bounds of 3 standard deviations, of all values about
/// their mean, from their median: of an even number the upper of the two middle ones. There must be one value or more.
ClipBounds SortAndClip(std::vector<WeightedValue>& values);

} // namespace corvane
