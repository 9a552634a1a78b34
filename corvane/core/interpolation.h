#pragma once

namespace corvane {

/// How a value between samples is made of them.
enum class Interpolation {
    kBilinear, ///< of the nearest 2 x 2
    kBicubic,  ///< of 4 x 4: cubic convolution with a = -0.5
    kLanczos3, ///< of 6 x 6: the sinc in a sinc as wide
    kLanczos4, ///< of 8 x 8
};

/// So many samples on either side of a position have a say, along each axis.
constexpr int ReachOf(Interpolation interpolation)
{
    return static_cast<int>(interpolation) + 1;
}

// What lies between two samples, in the two orders of operations that results depend on: their last bits differ.

/// The value a part of the way from a to b, each multiplied by its weight: a at 0 and b at 1, exactly. So samples are
/// interpolated wherever an image is read between them.
constexpr double Mix(double a, double b, double part)
{
    return a * (1.0 - part) + b * part;
}

/// The value a part of the way from a to b, as a step from a: equal values give that value, exactly.
constexpr double Ramp(double a, double b, double part)
{
    return a + (b - a) * part;
}

/// Bilinear interpolation: along the row above from a0 to a1 and the one below from b0 to b1, then between the two.
constexpr double Bilinear(double a0, double a1, double b0, double b1, double x, double y)
{
    return Mix(Mix(a0, a1, x), Mix(b0, b1, x), y);
}

} // namespace corvane
