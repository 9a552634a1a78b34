#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

// The middle of many samples, found by counting instead of sorting: exactly, and without a copy of them.
namespace corvane {

/// A whole number for each float, in their order; NaN of either sign comes last.
inline std::uint32_t KeyOf(float v)
{
    constexpr std::uint32_t kSign = 0x80000000U;
    constexpr std::uint32_t kNaNKey = 0xFFC00000U;
    const auto bits = std::bit_cast<std::uint32_t>(v);
    const std::uint32_t key = bits & kSign ? ~bits : bits | kSign;
    return v == v ? key : kNaNKey;
}

/// The float of a key.
inline float FloatOf(std::uint32_t key)
{
    constexpr std::uint32_t kSign = 0x80000000U;
    return std::bit_cast<float>(key & kSign ? key ^ kSign : ~key);
}

inline constexpr std::uint32_t kNoKey = 0xFFFFFFFFU; ///< of what is not counted
inline constexpr std::size_t kHalves = 0x10000;      ///< values of one half of the bits of keys

/// Adds the weight to counts[binOf(sample)] for each sample, unless that is kNoKey.
template <class BinOf>
void CountHalves(const float* samples, int length, std::uint64_t weight, BinOf binOf, std::uint64_t* counts)
{
    constexpr int kBlock = 512;
    for (int begin = 0; begin < length; begin += kBlock) {
        std::uint32_t bins[kBlock];
        const int size = std::min(kBlock, length - begin);
        for (int i = 0; i < size; ++i) {
            bins[i] = binOf(samples[begin + i]);
        }
        // Those that count move together first: a branch for each would be foreseen badly.
        int counted = 0;
        for (int i = 0; i < size; ++i) {
            bins[counted] = bins[i];
            counted += bins[i] != kNoKey;
        }
        for (int i = 0; i < counted; ++i) {
            counts[bins[i]] += weight;
        }
    }
}

/// The bin that holds the element of a rank, and its rank within the bin.
struct RankedBin {
    std::uint32_t bin;
    std::uint64_t rank;
};

/// The rank must be below the sum of the counts.
inline RankedBin FindBin(const std::vector<std::uint64_t>& counts, std::uint64_t rank)
{
    RankedBin found{0, rank};
    for (; found.rank >= counts[found.bin]; ++found.bin) {
        found.rank -= counts[found.bin];
    }
    return found;
}

/// The elements (n - 1) / 2 and n / 2 in order, of which the median is the mean; nothing where n is 0. keyOf(sample) is
/// the key of the element that a sample stands for, or kNoKey, and count(binOf) counts binOf(sample) of all samples as
/// `CountHalves` does. The upper halves of the keys are found first, then the lower ones among those.
template <class Count, class KeyOfSample>
std::optional<std::pair<float, float>> MiddleTwo(Count count, KeyOfSample keyOf)
{
    const std::vector<std::uint64_t> upper = count([=](float v) {
        const std::uint32_t key = keyOf(v);
        return key == kNoKey ? kNoKey : key >> 16;
    });
    const std::uint64_t total = std::accumulate(upper.begin(), upper.end(), std::uint64_t{0});
    if (total == 0) {
        return std::nullopt;
    }
    const auto lowerOf = [&](std::uint32_t half) {
        return count([=](float v) {
            const std::uint32_t key = keyOf(v);
            const bool isElsewhere = (key >> 16 != half) | (key == kNoKey);
            return isElsewhere ? kNoKey : key & 0xFFFFU;
        });
    };
    const auto valueOf = [](const RankedBin& high, const std::vector<std::uint64_t>& lower) {
        return FloatOf(high.bin << 16 | FindBin(lower, high.rank).bin);
    };
    const RankedBin first = FindBin(upper, (total - 1) / 2);
    const RankedBin second = FindBin(upper, total / 2);
    const std::vector<std::uint64_t> lower = lowerOf(second.bin);
    const float greater = valueOf(second, lower);
    return std::pair(first.bin == second.bin ? valueOf(first, lower) : valueOf(first, lowerOf(first.bin)), greater);
}

} // namespace corvane
