#include "io/formats/tiles/rice.h"

#include "io/formats/tiles/bit_reader.h"

namespace corvane::io::tiles {
namespace {

/// A difference from its code: 0, -1, 1, -2, 2 ...
std::uint32_t Unfold(std::uint32_t code)
{
    return code >> 1U ^ (0U - (code & 1U));
}

/// Sums run in the type of the values, where they wrap. T is unsigned for one byte, else signed.
template <class T, int kLengthBits, int kMostSplit>
void Decode(Bytes packed, int blockSize, std::span<std::int32_t> values)
{
    constexpr int kBits = 8 * sizeof(T);
    BitReader bits(packed);
    std::uint32_t sum = bits.Take(kBits);
    const auto step = static_cast<std::size_t>(blockSize);
    for (std::size_t done = 0; done < values.size(); done += step) {
        const std::span block = values.subspan(done, std::min(step, values.size() - done));
        const int split = static_cast<int>(bits.Take(kLengthBits)) - 1; // low bits that stand as they are
        if (split > kMostSplit) {
            throw DamagedData("a block's code has no meaning");
        }
        for (std::int32_t& value : block) {
            if (split == kMostSplit) { // noise: whole differences
                sum += Unfold(bits.Take(kBits));
            } else if (split >= 0) { // with a split of -1 all are equal
                const std::uint32_t high = bits.TakeZeros();
                sum += Unfold(high << split | bits.Take(split));
            }
            value = static_cast<std::int32_t>(static_cast<T>(sum));
        }
    }
}

} // namespace

void DecodeRice(Bytes packed, int valueBytes, int blockSize, std::span<std::int32_t> values)
{
    switch (valueBytes) {
    case 1:
        return Decode<std::uint8_t, 3, 6>(packed, blockSize, values);
    case 2:
        return Decode<std::int16_t, 4, 14>(packed, blockSize, values);
    default:
        return Decode<std::int32_t, 5, 25>(packed, blockSize, values);
    }
}

} // namespace corvane::io::tiles
