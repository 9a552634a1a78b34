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

/// The whole number next to a value below 2^51 in size.
class NearestWhole {
public:
    explicit constexpr NearestWhole(double v) : sum_(v + kNoFraction) {}

    constexpr double Value() const { return sum_ - kNoFraction; }
    /// 2 to the power of the number, for numbers from -1022 to 1023.
    constexpr double PowerOfTwo() const
    {
        constexpr std::uint64_t kExponentBias = 1023;
        constexpr int kMantissaBits = 52;
        return std::bit_cast<double>((std::bit_cast<std::uint64_t>(sum_) + kExponentBias) << kMantissaBits);
    }

private:
    static constexpr double kNoFraction = 0x1.8p52; // a sum with it ends in the bits of a whole number

    double sum_;
};

/// x to the power 2^n.
constexpr double RepeatedSquare(double x, int n)
{
    return n == 0 ? x : RepeatedSquare(x * x, n - 1);
}

/// terms[First] + terms[First + 1] * x + terms[First + 2] * x^2 + ..., Count terms. By halves (G. Estrin, 1960), which
/// do not wait for each other, and without a loop, which would keep the caller's loop from vectorising.
template <std::size_t First, std::size_t Count, std::size_t N>
constexpr double PolynomialPart(const std::array<double, N>& terms, double x)
{
    if constexpr (Count == 1) {
        return terms[First];
    } else {
        constexpr std::size_t kHalf = std::bit_floor(Count - 1);
        return PolynomialPart<First, kHalf>(terms, x) +
               PolynomialPart<First + kHalf, Count - kHalf>(terms, x) * RepeatedSquare(x, std::countr_zero(kHalf));
    }
}

/// terms[0] + terms[1] * x + terms[2] * x^2 + ...
template <std::size_t N>
constexpr double Polynomial(const std::array<double, N>& terms, double x)
{
    return PolynomialPart<0, N>(terms, x);
}

/// e to the power r, at most ln 2 / 2 in size: the term after the last one is below 1e-17.
constexpr double ExpSeries(double r)
{
    return Polynomial(kPerFactorial, r);
}

/// An exponent, brought between `kLeast` and `kMost`, as whole * ln 2 + rest, the rest at most ln 2 / 2 in size.
struct ReducedExponent {
    static constexpr double kLeast = -708.0; ///< powers of less would lose digits
    static constexpr double kMost = 709.0;   ///< powers of more are infinite

    NearestWhole whole;
    double rest;

    explicit constexpr ReducedExponent(double x) : whole(Within(x) * 0x1.71547652b82fep+0), rest(Rest(Within(x))) {}

private:
    static constexpr double Within(double x) { return std::min(std::max(x, kLeast), kMost); }
    constexpr double Rest(double x) const
    {
        // ln 2 in two parts, the first with so few digits that k times it is exact.
        constexpr double kLn2High = 0x1.62e42feep-1;
        constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
        const double k = whole.Value();
        return (x - k * kLn2High) - k * kLn2Low;
    }
};

/// e to the power x, within 2 units in the last place, in plain arithmetic: the system's mathematical library rounds
/// differently from one machine to the next. Without branches, so that a loop over it vectorises.
///
/// Below -708, where the result would lose digits, it is 0; above 709 it is infinite. NaN stays NaN.
constexpr double Exp(double x)
{
    const ReducedExponent reduced(x);
    const double result = ExpSeries(reduced.rest) * reduced.whole.PowerOfTwo();
    const double atMost = x > ReducedExponent::kMost ? std::numeric_limits<double>::infinity() : result;
    return x < ReducedExponent::kLeast ? 0.0 : atMost;
}

/// e to the power x less 1, which keeps its digits where x is close to 0: within 4 units in the last place. Above 709
/// it is infinite; NaN stays NaN.
constexpr double Expm1(double x)
{
    const ReducedExponent reduced(x);
    const double series = PolynomialPart<1, kPerFactorial.size() - 1>(kPerFactorial, reduced.rest) * reduced.rest;
    const double power = reduced.whole.PowerOfTwo();
    const double result = series * power + (power - 1.0);
    return x > ReducedExponent::kMost ? std::numeric_limits<double>::infinity() : result;
}

} // namespace corvane
