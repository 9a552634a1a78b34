#pragma once

#include <vector>

#include "corvane/platform/export.h"

namespace corvane::stars {

/// The standard deviation of normal noise over its median deviation.
inline constexpr double kMedianToSigma = 1.4826;

/// Where most of some values lie, and how far they scatter.
struct RobustLevel {
    double median = 0.0;    ///< of an even number the upper of the two middle values
    double deviation = 0.0; ///< standard deviation
};

/// The median of values without NaN, which change their order; 0 of none.
CORVANE_VISIBLE double MedianOf(std::vector<double>& values);

/// Measures values by their median and 1.4826 times the median deviation from it, which for normal noise is the
/// standard deviation and hardly moves with outliers. Whole numbers of little noise may have half of the deviations at
/// 0: then 1.2533 times their mean stands in. Zeros for no values; NaN is not allowed. F. R. Hampel, The influence
/// curve and its role in robust estimation, Journal of the American Statistical Association 69, 1974; B. Iglewicz and
/// D. C. Hoaglin, How to detect and handle outliers, ASQC 1993.
CORVANE_VISIBLE RobustLevel MeasureLevel(std::vector<double> values);

} // namespace corvane::stars
