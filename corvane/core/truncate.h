#pragma once

#include <limits>

namespace corvane {

/// The integer part of v as an int, towards zero; NaN and values that no int holds give the most negative int,
/// which is what the processor's own conversion gives and what C++ leaves undefined.
constexpr int Truncate(double v)
{
    constexpr double kBelow = -2147483649.0;
    constexpr double kAbove = 2147483648.0;
    return v > kBelow && v < kAbove ? static_cast<int>(v) : std::numeric_limits<int>::min();
}

} // namespace corvane
