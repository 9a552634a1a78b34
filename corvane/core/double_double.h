#pragma once

namespace corvane {

/// A number as the sum of two doubles that is not carried out: `high` is the sum rounded, `low` what that leaves over.
/// Some 32 decimal digits in plain arithmetic (T. J. Dekker, Numer. Math. 18, 1971).
///
/// Operations are within 2^-100 of their result, a sum or difference within as much of its greater operand. Values stay
/// below 2^990; where a product's last digits are smaller than any double, they are lost.
struct DoubleDouble {
    double high;
    double low;

    constexpr DoubleDouble(double rounded, double rest = 0.0) : high(rounded), low(rest) {} // so that doubles mix in
};

/// Without an error while it does not overflow (D. E. Knuth, The Art of Computer Programming, volume 2).
constexpr DoubleDouble ExactSum(double a, double b)
{
    const double high = a + b;
    const double ofB = high - a;
    const double ofA = high - ofB;
    return {high, (a - ofA) + (b - ofB)};
}

/// Without an error while the factors are below 2^990 and the product's last digit is a double: the factors are cut
/// into halves of 26 binary digits, whose products have no more than a double holds.
constexpr DoubleDouble ExactProduct(double a, double b)
{
    const auto upper = [](double v) {
        constexpr double kHalfOfDigits = 0x1p27 + 1.0;
        const double moved = v * kHalfOfDigits;
        return moved - (moved - v);
    };
    const double aHigh = upper(a);
    const double aLow = a - aHigh;
    const double bHigh = upper(b);
    const double bLow = b - bHigh;
    const double high = a * b;
    return {high, ((aHigh * bHigh - high) + aHigh * bLow + aLow * bHigh) + aLow * bLow};
}

constexpr DoubleDouble operator-(const DoubleDouble& a)
{
    return {-a.high, -a.low};
}

constexpr DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b)
{
    const DoubleDouble sum = ExactSum(a.high, b.high);
    return ExactSum(sum.high, sum.low + (a.low + b.low));
}

constexpr DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b)
{
    return a + -b;
}

constexpr DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b)
{
    const DoubleDouble product = ExactProduct(a.high, b.high);
    return ExactSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator/(const DoubleDouble& a, double divisor)
{
    const double quotient = a.high / divisor;
    const DoubleDouble rest = a - ExactProduct(quotient, divisor);
    return ExactSum(quotient, rest.high / divisor);
}

} // namespace corvane
