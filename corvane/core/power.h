#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "corvane/core/exponential.h"

namespace corvane {

/// A binary logarithm as whole + fraction, the fraction from -0.5 to 0.5 and within 2^-52. Kept apart, neither part
/// costs the other digits.
struct BinaryLogarithm {
    double whole;
    double fraction;
};

/// (2 / ln 2) / (2 n + 1), the terms of log2((1 + s) / (1 - s)) by odd powers of s.
inline constexpr std::array<double, 10> kLogarithmTerms = [] {
    std::array<double, 10> terms{};
    for (std::size_t n = 0; n < terms.size(); ++n) {
        terms[n] = 0x1.71547652b82fep+1 / static_cast<double>(2 * n + 1);
    }
    return terms;
}();

/// What brings a subnormal number among the normal ones, where it has an exponent; 1 for those.
constexpr double ScaleToNormal(double magnitude)
{
    return magnitude < std::numeric_limits<double>::min() ? 0x1p54 : 1.0;
}

/// The whole number in the low 51 bits.
constexpr double ToDouble(std::uint64_t whole)
{
    constexpr double kUnitsLast = 0x1p52; // its last bit counts ones
    return std::bit_cast<double>(whole | std::bit_cast<std::uint64_t>(kUnitsLast)) - kUnitsLast;
}

/// The binary logarithm of a normal number above 0, given the bias of its exponent; a number for anything else.
constexpr BinaryLogarithm Log2OfNormal(double x, double bias = 1023.0)
{
    constexpr auto kSqrtHalf = std::bit_cast<std::uint64_t>(0x1.6a09e667f3bcdp-1);
    constexpr auto kOne = std::bit_cast<std::uint64_t>(1.0);
    constexpr int kMantissaBits = 52;
    constexpr std::uint64_t kMantissa = (std::uint64_t{1} << kMantissaBits) - 1;

    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x) + (kOne - kSqrtHalf);
    const double m = std::bit_cast<double>((bits & kMantissa) + kSqrtHalf); // from sqrt(1/2) to sqrt(2)
    const double s = (m - 1.0) / (m + 1.0);
    const double ss = s * s;
    const double series = Polynomial(kLogarithmTerms, ss); // ss is below 0.03: the term after is below 3e-17
    return {ToDouble(bits >> kMantissaBits) - bias, s * series};
}

/// The binary logarithm of a finite number above 0; a number for anything else.
constexpr BinaryLogarithm Log2(double x)
{
    const double scale = ScaleToNormal(x);
    return Log2OfNormal(x * scale, scale == 1.0 ? 1023.0 : 1023.0 + 54.0);
}

/// The natural logarithm of 1 + x for a finite x above -1, which keeps its digits where x is close to 0: within 4 units
/// in the last place. A number for other finite x.
constexpr double Log1p(double x)
{
    constexpr double kLn2 = 0x1.62e42fefa39efp-1;

    const double sum = 1.0 + x;
    const BinaryLogarithm log = Log2OfNormal(sum);
    return (log.whole + log.fraction) * kLn2 + (x - (sum - 1.0)) / sum; // with what the sum has lost of x
}

/// A power and its binary logarithm; the power is one where that is from -1022 to 1023.
struct Power {
    double value;
    double log;
};

/// The power y of a number of that logarithm.
constexpr Power Raise(const BinaryLogarithm& log, double y)
{
    constexpr double kLn2 = 0x1.62e42fefa39efp-1;
    constexpr std::uint64_t kHighBits = ~std::uint64_t{0xfff};

    const double yHigh = std::bit_cast<double>(std::bit_cast<std::uint64_t>(y) & kHighBits);
    const double high = yHigh * log.whole; // exact: the factors have 41 and 11 digits
    const double low = (y - yHigh) * log.whole + y * log.fraction;
    const double z = high + low;
    const NearestWhole n(z);
    return {ExpSeries(((high - n.Value()) + low) * kLn2) * n.PowerOfTwo(), z};
}

/// x to the power y, for a finite y other than 0: within (1 + |y|) * 4e-16 of the result, in plain arithmetic and
/// without branches, as `Exp`.
///
/// Results below 2^-1022, which would lose digits, are 0; those above 2^1023 are infinite. Zero and infinity give what
/// they tend to; NaN and numbers below 0 give NaN.
constexpr double Pow(double x, double y)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();

    const Power power = Raise(Log2(x), y);
    const double inRange = power.log < -1022.0 ? 0.0 : (power.log > 1023.0 ? kInfinity : power.value);
    const bool isEnd = (x == 0.0) | (x == kInfinity);
    const double atEnd = (x == 0.0) == (y > 0.0) ? 0.0 : kInfinity;
    return x >= 0.0 ? (isEnd ? atEnd : inRange) : std::numeric_limits<double>::quiet_NaN();
}

/// The same bits with fewer operations, for a normal x above 0, or infinity, and a y above -0.99 that the compiler
/// knows; a number for any other x.
constexpr double PowOfNormal(double x, double y)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();

    const Power power = Raise(Log2OfNormal(x), y);
    const double above = power.log > 1023.0 ? kInfinity : power.value;
    const double below = x < kInfinity ? power.value : 0.0; // no power of a finite x is too small
    return y > 0.0 ? above : below;
}

/// The cube root of a normal number above 0, within 1.5 units in the last place, in plain arithmetic and without
/// branches; a number or NaN for anything else.
///
/// A third of the exponent, taken from the bits, gives 1 / cbrt(x) to one part in 28, and the binomial series of what
/// is left improves it to 2e-6; the root itself takes one such step more.
constexpr double CbrtOfNormal(double v)
{
    // 4/3 of the upper half of the bits of 1.0, moved so that the error is the same to both sides.
    constexpr double kGuess = 1430186000.0;
    constexpr double kThird = 1.0 / 3.0;

    const double third = kGuess - ToDouble(std::bit_cast<std::uint64_t>(v) >> 32) * kThird;
    const double guess = std::bit_cast<double>(std::bit_cast<std::uint64_t>(third + 0x1p52) << 32);
    const double e = 1.0 - v * guess * guess * guess;
    const double inverse = guess + guess * e * (kThird + e * (2.0 / 9.0 + e * (14.0 / 81.0 + e * (35.0 / 243.0))));
    const double root = v * inverse * inverse;
    const double d = 1.0 - root * inverse;
    return root + root * d * (2.0 / 3.0 + d * (5.0 / 9.0));
}

/// The cube root, with the same precision. Zeros, infinities and NaN are their own.
constexpr double Cbrt(double x)
{
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;

    const std::uint64_t sign = std::bit_cast<std::uint64_t>(x) & kSign;
    const double magnitude = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) ^ sign);
    const double scale = ScaleToNormal(magnitude);
    const double unscaled = CbrtOfNormal(magnitude * scale) * (scale == 1.0 ? 1.0 : 0x1p-18); // 54 / 3
    const double result = std::bit_cast<double>(std::bit_cast<std::uint64_t>(unscaled) | sign);
    const bool hasOwn = (magnitude > 0.0) & (magnitude < std::numeric_limits<double>::infinity());
    return hasOwn ? result : x;
}

} // namespace corvane
