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

/// v * x^N, in an order in which nothing on the way leaves the range of numbers where v and the result do not.
template <int kN>
constexpr double TimesPower(double v, double x)
{
    if constexpr (kN == 0) {
        return v;
    } else {
        return TimesPower<kN / 2>(kN % 2 == 1 ? v * x : v, x * x);
    }
}

/// What (1 - e)^(-1/N) adds to 1, divided by e, is a series with these terms.
template <int kN>
inline constexpr std::array<double, 4> kRootTerms = [] {
    std::array<double, 4> terms{1.0 / kN};
    for (std::size_t i = 1; i < terms.size(); ++i) {
        terms[i] = terms[i - 1] * static_cast<double>(1 + kN * static_cast<int>(i)) / (kN * static_cast<double>(i + 1));
    }
    return terms;
}();

/// A value close to v^(-1/N) made closer: its relative error is raised to the fifth power.
template <int kN>
constexpr double CloserInverseRoot(double v, double root)
{
    const double e = 1.0 - TimesPower<kN>(v, root);
    return root + root * e * Polynomial(kRootTerms<kN>, e);
}

/// v^(-1/N) of a normal number above 0, to one part in 28 or better: by a part of the exponent, taken from the
/// bits. `kOne` is about (1 + 1/N) times the upper half of the bits of 1.0, moved so that the error is the same to both
/// sides.
template <int kN>
constexpr double RoughInverseRoot(double v, double kOne)
{
    const double root = kOne - ToDouble(std::bit_cast<std::uint64_t>(v) >> 32) * (1.0 / kN);
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(root + 0x1p52) << 32);
}

/// The cube root of a normal number above 0, within 1.5 units in the last place, in plain arithmetic and without
/// branches; a number or NaN for anything else.
constexpr double CbrtOfNormal(double v)
{
    const double inverse = CloserInverseRoot<3>(v, RoughInverseRoot<3>(v, 1430186000.0)); // to 2e-6
    const double root = v * inverse * inverse;
    const double d = 1.0 - root * inverse;
    return root + root * d * (2.0 / 3.0 + d * (5.0 / 9.0));
}

/// @name The power -1/5 and -1/11 of a normal number above 0, within 2 units in the last place, in plain arithmetic and
/// without branches; a number or NaN for anything else
/// @{
constexpr double InverseFifthRootOfNormal(double v)
{
    return CloserInverseRoot<5>(v, CloserInverseRoot<5>(v, RoughInverseRoot<5>(v, 1287167084.0)));
}

constexpr double InverseEleventhRootOfNormal(double v)
{
    return CloserInverseRoot<11>(v, CloserInverseRoot<11>(v, RoughInverseRoot<11>(v, 1170150286.0)));
}
/// @}

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
