#include "io/formats/tiles/hcompress.h"

#include <algorithm>

#include "io/formats/tiles/h_transform.h"
#include "io/formats/tiles/quadtree.h"

namespace corvane::io::tiles {
namespace {

constexpr std::int64_t kMostCoefficient = std::int64_t{1} << 54U;
constexpr int kMostPlanes = 54;

struct TileHead {
    std::int64_t quantum;
    std::int64_t sum;
    int planes[3]; ///< of the sums; of differences of rows or columns; of both
};

constexpr std::size_t kHeadBytes = 25;

TileHead ReadHead(Bytes packed, std::size_t rows, std::size_t columns)
{
    constexpr std::uint16_t kMagic = 0xdd99;
    if (packed.size() < kHeadBytes || LoadBigEndian<std::uint16_t>(packed.data()) != kMagic) {
        throw DamagedData("the data are none of Hcompress");
    }
    if (LoadBigEndian<std::uint32_t>(packed.data() + 2) != rows ||
        LoadBigEndian<std::uint32_t>(packed.data() + 6) != columns) {
        throw DamagedData("the data are those of a tile of another size");
    }
    TileHead head{std::max(LoadBigEndian<std::int32_t>(packed.data() + 10), 1),
                  LoadBigEndian<std::int64_t>(packed.data() + 14),
                  {packed[22], packed[23], packed[24]}};
    if (*std::max_element(std::begin(head.planes), std::end(head.planes)) > kMostPlanes) {
        throw DamagedData("its coefficients have too many bits");
    }
    return head;
}

void TakeSigns(BitReader& bits, std::vector<std::int64_t>& values)
{
    for (std::int64_t& value : values) {
        if (value != 0 && bits.Take(1) != 0) {
            value = -value;
        }
    }
}

void Scale(std::vector<std::int64_t>& values, std::int64_t quantum)
{
    const std::int64_t most = kMostCoefficient / quantum;
    for (std::int64_t& value : values) {
        if (value > most || value < -most) {
            throw DamagedData("its coefficients are too large");
        }
        value *= quantum;
    }
}

} // namespace

void DecodeHcompress(Bytes packed, std::size_t width, bool smooth, std::span<std::int32_t> values)
{
    HTransform transform{values.size() / width, width, std::vector<std::int64_t>(values.size())};
    const TileHead head = ReadHead(packed, transform.rows, width);
    BitReader bits(packed.subspan(kHeadBytes));
    const std::size_t top = (transform.rows + 1) / 2;
    const std::size_t left = (width + 1) / 2;
    std::int64_t* const first = transform.values.data();
    DecodeBitPlanes(bits, head.planes[0], {first, width, top, left});
    DecodeBitPlanes(bits, head.planes[1], {first + left, width, top, width - left});
    DecodeBitPlanes(bits, head.planes[1], {first + top * width, width, transform.rows - top, left});
    DecodeBitPlanes(bits, head.planes[2], {first + top * width + left, width, transform.rows - top, width - left});
    if (bits.Take(4) != 0) {
        throw DamagedData("the data do not end where they should");
    }
    bits.SkipToByte();
    TakeSigns(bits, transform.values);
    transform.values[0] = head.sum;
    Scale(transform.values, head.quantum);
    InvertHTransform(transform, smooth ? head.quantum : 0);
    std::transform(transform.values.begin(), transform.values.end(), values.begin(),
                   [](std::int64_t v) { return static_cast<std::int32_t>(v); });
}

} // namespace corvane::io::tiles
