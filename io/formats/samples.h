#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "corvane/core/blank.h"

namespace corvane::io {

/// Calls `action` with a value of the C++ type of a FITS BITPIX; unsigned integers when `isSigned` is false.
/// Returns false for bits that no type has.
template <class Action>
bool WithSampleType(int bits, bool isSigned, Action action)
{
    switch (bits) {
    case 8:
        return isSigned ? action(std::int8_t{}) : action(std::uint8_t{}), true;
    case 16:
        return isSigned ? action(std::int16_t{}) : action(std::uint16_t{}), true;
    case 32:
        return isSigned ? action(std::int32_t{}) : action(std::uint32_t{}), true;
    case -32:
        return action(float{}), true;
    case -64:
        return action(double{}), true;
    default:
        return false;
    }
}

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
    bool operator()(float v) const { return std::isnan(v) || blank(v); }
};

/// A row of a working image.
inline const float* RowOf(const CImage& image, int y, int plane)
{
    return reinterpret_cast<const float*>(image.GetImageAdr(0, y, plane, 1));
}

} // namespace corvane::io
