#pragma once

#include "corvane/core/image.h"

namespace corvane {

/// 1 / 255 as the way back from display values to raw ones is written; results depend on this exact factor.
inline constexpr double kPer255 = 0.00392156862745098;

/// Degrees to radians with pi taken as 3.141592654.
inline constexpr double kDegree = 0.017453292522222223;

/// Brightness of a colour, added in the order red, green, blue. Some readers add it in another order of their own,
/// which their results depend on.
constexpr double BrightnessOf(double r, double g, double b)
{
    return 0.299 * r + 0.587 * g + 0.114 * b;
}

/// The levels of one plane, ready for a row kernel.
struct DisplayScale {
    double min;
    double range;

    DisplayScale(const CImage& image, int plane) : min(image.GetLevelMin(plane)), range(image.GetLevelRange(plane)) {}

    double To256(double v) const { return (v - min) / range * 255.0; }
    double ToRaw(double d) const { return range * d * kPer255 + min; }
    /// What the way to display values and back multiplies a distance by: 1 up to rounding, NaN when the range is 0.
    double RoundTrip() const { return 255.0 / range * range * kPer255; }
};

} // namespace corvane
