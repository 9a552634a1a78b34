#include "examples/night/portable_math.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace corvane::night {

namespace {

constexpr std::uint64_t kMantissaMask = 0x000fffffffffffff;
constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;

} // namespace

double Log(double x)
{
    // x = 2^k m with m within a factor of the square root of 2 of 1; log m = 2 artanh((m - 1) / (m + 1)).
    const auto bits = std::bit_cast<std::uint64_t>(x);
    int k = static_cast<int>(bits >> kMantissaBits) - kExponentBias;
    double m = std::bit_cast<double>((bits & kMantissaMask) | std::bit_cast<std::uint64_t>(1.0));
    if (m > std::numbers::sqrt2) {
        m *= 0.5;
        ++k;
    }
    const double s = (m - 1.0) / (m + 1.0);
    const double q = s * s; // at most 0.0295: the next term is below 1e-17
    const double tail =
        q * (1.0 / 3 +
             q * (1.0 / 5 +
                  q * (1.0 / 7 +
                       q * (1.0 / 9 + q * (1.0 / 11 + q * (1.0 / 13 + q * (1.0 / 15 + q * (1.0 / 17 + q / 19))))))));
    return k * std::numbers::ln2 + 2.0 * (s + s * tail);
}

SineCosine TurnBy(double degrees)
{
    constexpr int kTerms = 24; // enough for a full turn
    const double angle = std::fmod(degrees, 360.0) * (std::numbers::pi / 180.0);
    double sine = 0.0;
    double cosine = 0.0;
    double term = 1.0; // angle^n / n!
    for (int n = 0; n < 2 * kTerms; n += 2) {
        const double sign = n % 4 == 0 ? 1.0 : -1.0;
        cosine += sign * term;
        term *= angle / (n + 1);
        sine += sign * term;
        term *= angle / (n + 2);
    }
    return {sine, cosine};
}

} // namespace corvane::night
