#pragma once

#include <limits>

#include "corvane/core/power.h"

namespace corvane {

/// Red, green, blue; 1 is the white of the display.
struct Rgb {
    double r;
    double g;
    double b;
};

/// Tristimulus values on the scale of the primaries' matrix, on which white is 5.6508 three times.
struct Xyz {
    double x;
    double y;
    double z;
};

/// CIE 1976 L*a*b*.
struct Lab {
    double l;
    double a;
    double b;
};

/// @name The colour model, one conversion at a time
/// `CColor` says what they do. They hold for any doubles, and loops over them vectorise.
/// @{

inline constexpr double kWhite = 5.6508;
inline constexpr double kPerWhite = 0.17696609329652438;
inline constexpr double kThirdOfSum = 0.3333333333333333;
inline constexpr double kGammaFloor = 1e-7; ///< colours whose mean is below it keep their values
inline constexpr double kLinearBelow = 0.008856;
inline constexpr double kLinearOffset = 16.0 / 116.0;

/// @name The factors that take a colour from one side of the gamma to the other: powers of its mean
/// @{
constexpr double MeanOf(const Rgb& colour)
{
    return (colour.r + colour.g + colour.b) * kThirdOfSum;
}

/// The mean to the power 1.2.
constexpr double LinearFactor(double mean)
{
    const double root = InverseFifthRootOfNormal(mean);
    const double half = mean * root * root; // to the power 0.6
    const double finite = mean >= kGammaFloor ? half * half : 1.0;
    return mean == std::numeric_limits<double>::infinity() ? mean : finite;
}

/// The mean to the power -6/11, which is 1 / 2.2 - 1.
constexpr double DisplayFactor(double mean)
{
    const double root = InverseEleventhRootOfNormal(mean);
    const double cube = root * root * root;
    const double finite = mean >= kGammaFloor ? cube * cube : 1.0;
    return mean == std::numeric_limits<double>::infinity() ? 0.0 : finite;
}
/// @}

constexpr Rgb Linearise(const Rgb& colour)
{
    const double k = LinearFactor(MeanOf(colour));
    return {k * colour.r, k * colour.g, k * colour.b};
}

constexpr Xyz ToXyz(const Rgb& linear)
{
    return {2.7689 * linear.r + 1.7517 * linear.g + 1.1302 * linear.b, linear.r + 4.5907 * linear.g + 0.0601 * linear.b,
            0.0565 * linear.g + 5.5943 * linear.b};
}

/// The cube root of what is above kLinearBelow, infinity included; a number or NaN for anything else.
constexpr double CbrtAboveLinear(double t)
{
    const double root = CbrtOfNormal(t);
    return t < std::numeric_limits<double>::infinity() ? root : t;
}

constexpr double ToLightness(const Xyz& colour)
{
    const double y = colour.y * kPerWhite;
    const double root = CbrtAboveLinear(y);
    return y > kLinearBelow ? 116.0 * root - 16.0 : 903.29 * y;
}

/// From a part of white's tristimulus value to the scale on which differences are a and b.
constexpr double ToLabScale(double t)
{
    const double root = CbrtAboveLinear(t);
    return t > kLinearBelow ? root : 7.78 * t + kLinearOffset;
}

constexpr double FromLabScale(double f)
{
    constexpr double kThreshold = Cbrt(kLinearBelow);
    const double linear = (f - kLinearOffset) * 0.12853470437017994;
    return f <= kThreshold ? linear : f * f * f;
}

constexpr Lab ToLab(const Xyz& colour)
{
    const double fx = ToLabScale(colour.x * kPerWhite);
    const double fy = ToLabScale(colour.y * kPerWhite);
    const double fz = ToLabScale(colour.z * kPerWhite);
    return {ToLightness(colour), (fx - fy) * 500.0, (fy - fz) * 200.0};
}

constexpr Xyz ToXyz(const Lab& colour)
{
    constexpr double kLinearLightness = 7.999536239999999;
    constexpr double kPerLightness = 0.0011070641765103123;
    static_assert(kLinearLightness * kPerLightness <= kLinearBelow); // so where y is above, f is its cube root
    const double f = (colour.l + 16.0) * 0.008620689655172414;
    const double y = colour.l <= kLinearLightness ? colour.l * kPerLightness : f * f * f;
    const double fy = y > kLinearBelow ? f : 7.78 * y + kLinearOffset;
    return {FromLabScale(colour.a * 0.002 + fy) * kWhite, y * kWhite, FromLabScale(fy - colour.b * 0.005) * kWhite};
}

/// Gives display values; what is not above 0, outside the primaries' triangle, becomes 0.
constexpr Rgb ToRgb(const Xyz& colour)
{
    const auto notBelow0 = [](double v) { return v > 0.0 ? v : 0.0; };
    const double b = ((colour.x - 2.7689 * colour.y) * 0.0565 + 10.95948923 * colour.z) * 0.01629590105369801;
    const double g = (colour.z - 5.5943 * b) * 17.699115044247787;
    const double r = colour.y - 4.5907 * g - 0.0601 * b;
    const Rgb linear{notBelow0(r), notBelow0(g), notBelow0(b)};
    const double k = DisplayFactor(MeanOf(linear));
    return {linear.r * k, linear.g * k, linear.b * k};
}
/// @}

/// @name CIE L*a*b* of the pixels of a row
/// The conversions of `CColor`, with the same bits, on arrays that vectorise. Red, green and blue are in the unit
/// range, not clipped. An output may be the array of any input.
/// @{
void RgbToLabRow(int count, const double* red, const double* green, const double* blue, double* lightness, double* a,
                 double* b);
void RgbToLightnessRow(int count, const double* red, const double* green, const double* blue, double* lightness);
void LabToRgbRow(int count, const double* lightness, const double* a, const double* b, double* red, double* green,
                 double* blue);
/// @}

} // namespace corvane
