#pragma once

#include <cmath>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/sample_type.h"

namespace corvane::io {

/// Rounds to the nearest integer of type T and cuts to [low, largest T]. v must not be NaN.
template <class T>
T RoundTo(double v, double low)
{
    const double rounded = std::nearbyint(v);
    constexpr auto kHigh = static_cast<double>(std::numeric_limits<T>::max());
    return static_cast<T>(rounded < low ? low : rounded > kHigh ? kHigh : rounded);
}

/// Tells samples without a value: NaN and blanks.
struct UndefinedTest {
    BlankTest blank;

    explicit UndefinedTest(const CImage& image) : blank(image) {}
    bool operator()(float v) const { return (v != v) | blank(v); }
};

/// A row of a working image.
inline const float* RowOf(const CImage& image, int y, int plane)
{
    return reinterpret_cast<const float*>(image.GetImageAdr(0, y, plane, 1));
}

} // namespace corvane::io
