#include "stars/sort_samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace corvane::stars {

namespace {

constexpr std::uint32_t kSign = 0x80000000U;
constexpr unsigned kBitsOfKey = 32;
constexpr unsigned kBitsOfByte = 8;

/// A number that is in order where the sample is.
std::uint32_t KeyOf(float sample)
{
    const auto bits = std::bit_cast<std::uint32_t>(sample + 0.0F); // -0 becomes 0
    return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

float SampleOf(std::uint32_t key)
{
    return std::bit_cast<float>((key & kSign) != 0 ? key & ~kSign : ~key);
}

/// Brings keys in the order of one byte, those alike in the order in which they come.
void SortByByte(const std::vector<std::uint32_t>& keys, unsigned shift, std::vector<std::uint32_t>& sorted)
{
    const auto byteOf = [shift](std::uint32_t key) { return key >> shift & 0xFFU; };
    std::array<std::uint32_t, (1U << kBitsOfByte) + 1> places{};
    for (const std::uint32_t key : keys) {
        ++places[byteOf(key) + 1];
    }
    for (std::size_t i = 1; i < places.size(); ++i) {
        places[i] += places[i - 1];
    }
    for (const std::uint32_t key : keys) {
        sorted[places[byteOf(key)]++] = key;
    }
}

} // namespace

void SortSamples(std::vector<float>& samples)
{
    std::vector<std::uint32_t> keys(samples.size());
    std::vector<std::uint32_t> sorted(samples.size());
    std::transform(samples.begin(), samples.end(), keys.begin(), KeyOf);
    for (unsigned shift = 0; shift < kBitsOfKey; shift += kBitsOfByte) {
        SortByByte(keys, shift, sorted);
        keys.swap(sorted);
    }
    std::transform(keys.begin(), keys.end(), samples.begin(), SampleOf);
}

} // namespace corvane::stars
