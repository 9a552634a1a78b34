#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace corvane {

/// 1 / n! for n = 0..14.
inline constexpr std::array<double, 15> kPerFactorial = [] {
    std::array<double, 15> factors{1.0};
    double factorial = 1.0;
    for (std::size_t n = 1; n < factors.size(); ++n) {
        factorial *= static_cast<double>(n);
        factors[n] = 1.0 / factorial;
    }
    return factors;
}();

/// e to the power x, within 2 units in the last place, in plain arithmetic: the system's mathematical library rounds
/// differently from one machine to the next. Without branches, so that a loop over it vectorises.
///
/// Below -708, where the result would lose digits, it is 0; above 709 it is infinite. NaN stays NaN.
constexpr double Exp(double x)
{
    constexpr double kLeast = -708.0;
    constexpr double kMost = 709.0;
    constexpr double kPerLn2 = 0x1.71547652b82fep+0;
    // ln 2 in two parts, the first with so few digits that k times it is exact.
    constexpr double kLn2High = 0x1.62e42feep-1;
    constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
    constexpr double kWhole = 0x1.8p52; // a sum with it has no fraction, and its last bits are a whole number
    constexpr std::uint64_t kExponentBias = 1023;
    constexpr int kMantissaBits = 52;

    const double within = std::min(std::max(x, kLeast), kMost);
    const double sum = within * kPerLn2 + kWhole;
    const double k = sum - kWhole;
    const double r = (within - k * kLn2High) - k * kLn2Low;
    double series = 0.0; // r is at most ln 2 / 2: the term after the last one is below 1e-17
    for (std::size_t n = kPerFactorial.size(); n-- > 0;) {
        series = series * r + kPerFactorial[n];
    }
    const double power = std::bit_cast<double>((std::bit_cast<std::uint64_t>(sum) + kExponentBias) << kMantissaBits);
    const double result = series * power;
    return x < kLeast ? 0.0 : (x > kMost ? std::numeric_limits<double>::infinity() : result);
}

} // namespace corvane
