#include "io/formats/tiles/dither.h"

#include <array>
#include <limits>

namespace corvane::io::tiles {
namespace {

constexpr std::size_t kRandomCount = 10000;
constexpr std::int32_t kExactZero = -2147483646;

/// The random numbers of the standard's appendix I, from 0 to 1 (Park and Miller 1988, CACM 31, 1192).
const std::array<float, kRandomCount>& RandomNumbers()
{
    static const auto numbers = [] {
        constexpr std::uint64_t kFactor = 16807;
        constexpr std::uint64_t kModulus = 2147483647;
        std::array<float, kRandomCount> sequence{};
        std::uint64_t seed = 1;
        for (float& number : sequence) {
            seed = seed * kFactor % kModulus;
            number = static_cast<float>(static_cast<double>(seed) / static_cast<double>(kModulus));
        }
        return sequence;
    }();
    return numbers;
}

/// Walks through the random numbers as the standard says: a number of the sequence tells where to begin, and at its end
/// the next one tells where to go on.
class Dither {
public:
    explicit Dither(long long start) : start_(static_cast<std::size_t>(start) % kRandomCount) { Jump(); }

    double Next()
    {
        const double number = RandomNumbers()[at_];
        if (++at_ == kRandomCount) {
            start_ = (start_ + 1) % kRandomCount;
            Jump();
        }
        return number;
    }

private:
    void Jump()
    {
        constexpr float kStarts = 500.0F;
        at_ = static_cast<std::size_t>(RandomNumbers()[start_] * kStarts);
    }

    std::size_t start_;
    std::size_t at_ = 0;
};

} // namespace

void Dequantise(std::span<const std::int32_t> values, const Quantisation& quantisation, double outerScale,
                double outerZero, float* samples)
{
    Dither dither(quantisation.dither.value_or(0));
    for (const std::int32_t value : values) {
        const double whole = quantisation.dither ? value - dither.Next() + 0.5 : value;
        double sample = whole * quantisation.scale + quantisation.zero;
        if (quantisation.undefined == value) {
            sample = std::numeric_limits<double>::quiet_NaN();
        } else if (quantisation.keepsZero && value == kExactZero) {
            sample = 0.0;
        }
        *samples++ = static_cast<float>(sample * outerScale + outerZero);
    }
}

} // namespace corvane::io::tiles
