#include "io/formats/tile_decoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "corvane/core/error.h"
#include "corvane/core/sample_type.h"
#include "io/formats/damaged_data.h"
#include "io/formats/inflate.h"
#include "io/formats/tiles/dither.h"
#include "io/formats/tiles/hcompress.h"
#include "io/formats/tiles/plio.h"
#include "io/formats/tiles/rice.h"

namespace corvane::io {
namespace {

/// What no code makes of `count` samples: lists of runs and short gzip data come nearest.
std::uint64_t MostPacked(std::uint64_t count)
{
    constexpr std::uint64_t kOfSample = 16;
    constexpr std::uint64_t kOfTile = 4096;
    return count * kOfSample + kOfTile;
}

/// BITPIX of a table's type.
int BitsOf(char type)
{
    constexpr std::string_view kTypes = "BIJKED";
    constexpr int kBits[] = {8, 16, 32, 64, -32, -64};
    return kBits[std::min(kTypes.find(type), kTypes.size() - 1)];
}

std::size_t BytesOf(int bits)
{
    return static_cast<std::size_t>(std::abs(bits)) / 8;
}

/// Puts bytes that stand in order of their weight back together: all the high ones come first.
template <std::size_t kValueBytes>
void UnshuffleValues(Bytes shuffled, MutableBytes bytes)
{
    const std::size_t count = shuffled.size() / kValueBytes;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < kValueBytes; ++k) {
            bytes[i * kValueBytes + k] = shuffled[k * count + i];
        }
    }
}

/// Bytes that make no whole values stay as they are; they are refused for their number.
void Unshuffle(Bytes shuffled, std::size_t valueBytes, MutableBytes bytes)
{
    switch (valueBytes) {
    case 2:
        return UnshuffleValues<2>(shuffled, bytes);
    case 4:
        return UnshuffleValues<4>(shuffled, bytes);
    case 8:
        return UnshuffleValues<8>(shuffled, bytes);
    default:
        std::copy(shuffled.begin(), shuffled.end(), bytes.begin());
    }
}

/// Whole numbers of 1, 2 or 4 bytes.
void ToValues(Bytes bytes, std::span<std::int32_t> values)
{
    const std::size_t size = bytes.size() / values.size();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const unsigned char* at = bytes.data() + i * size;
        values[i] = size == 1 ? *at : size == 2 ? LoadBigEndian<std::int16_t>(at) : LoadBigEndian<std::int32_t>(at);
    }
}

} // namespace

std::uint64_t TileMemory(const TileLayout& layout)
{
    constexpr std::uint64_t kMost = std::uint64_t{1} << 56U;
    constexpr std::uint64_t kWork = 25; // the sample, its whole number, and what Hcompress or gzip take
    const std::uint64_t samples = std::min<std::uint64_t>(layout.TileSamples(), kMost);
    return samples * kWork + std::min(layout.heapBytes, MostPacked(samples));
}

void TileDecoder::ReadField(const TileColumn& column, std::uint64_t tile, MutableBytes bytes) const
{
    const std::uint64_t at = layout_.rows + tile * layout_.rowBytes + column.offset;
    if (file_.Source().Read(at, bytes) < bytes.size()) {
        throw DamagedData("the file ends within the table");
    }
}

template <class Number>
Number TileDecoder::ReadNumber(const TileColumn& column, std::uint64_t tile) const
{
    std::array<unsigned char, 8> field{};
    const int bits = BitsOf(column.type);
    ReadField(column, tile, {field.data(), BytesOf(bits)});
    auto number = static_cast<Number>(LoadBigEndian<std::int64_t>(field.data())); // of 64 bits
    WithSampleType(bits, bits != 8,
                   // NOLINTNEXTLINE(bugprone-signed-char-misuse): a number, never a character
                   [&](auto type) { number = static_cast<Number>(LoadBigEndian<decltype(type)>(field.data())); });
    return number;
}

/// Reads what a tile has in a column; false when it has nothing there.
bool TileDecoder::ReadPacked(const std::optional<TileColumn>& column, std::uint64_t tile, std::size_t count,
                             std::vector<unsigned char>& packed) const
{
    if (!column) {
        return false;
    }
    std::array<unsigned char, 16> field{};
    const bool isLong = column->descriptor == 'Q';
    ReadField(*column, tile, {field.data(), isLong ? 16U : 8U});
    const auto number = [&](int i) {
        return isLong ? LoadBigEndian<std::int64_t>(field.data() + 8 * i)
                      : LoadBigEndian<std::int32_t>(field.data() + 4 * i);
    };
    if (number(0) == 0) {
        return false;
    }
    const auto length = static_cast<std::uint64_t>(number(0));
    const auto offset = static_cast<std::uint64_t>(number(1));
    const std::uint64_t size = BytesOf(BitsOf(column->type));
    if (number(0) < 0 || number(1) < 0 || offset > layout_.heapBytes || length > (layout_.heapBytes - offset) / size) {
        throw DamagedData("its data lie outside of the heap");
    }
    if (length > MostPacked(count) / size) {
        throw DamagedData("it has more data than it can need");
    }
    packed.resize(static_cast<std::size_t>(length * size));
    if (file_.Source().Read(layout_.heap + offset, packed) < packed.size()) {
        throw DamagedData("the file ends within its data");
    }
    return true;
}

/// Unpacks gzip data from `packed` to `bytes`.
void TileDecoder::Unpack(std::size_t mostBytes, bool shuffled, TileBuffers& buffers) const
{
    std::vector<unsigned char>& unpacked = shuffled ? buffers.shuffled : buffers.bytes;
    unpacked.resize(mostBytes);
    unpacked.resize(Inflate(buffers.packed, unpacked));
}

StoredScale TileDecoder::ScaleOf(std::uint64_t tile) const
{
    StoredScale scale = scale_;
    if (layout_.undefinedColumn && layout_.image.bits > 0) {
        scale.undefined = ReadNumber<long long>(*layout_.undefinedColumn, tile);
    }
    return scale;
}

void TileDecoder::FromValues(std::uint64_t tile, std::span<const std::int32_t> values, std::span<float> samples) const
{
    if (!layout_.isQuantised) {
        ToSamples(values.data(), values.size(), ScaleOf(tile), samples.data());
        return;
    }
    tiles::Quantisation how{layout_.scale, layout_.zero, layout_.undefined, {}, layout_.keepsZero};
    if (layout_.scaleColumn) {
        how.scale = ReadNumber<double>(*layout_.scaleColumn, tile);
    }
    if (layout_.zeroColumn) {
        how.zero = ReadNumber<double>(*layout_.zeroColumn, tile);
    }
    if (layout_.undefinedColumn) {
        how.undefined = ReadNumber<long long>(*layout_.undefinedColumn, tile);
    }
    if (layout_.isDithered) {
        how.dither = static_cast<long long>(tile % 10000) + layout_.ditherStart - 1;
    }
    tiles::Dequantise(values, how, scale_.scale, scale_.zero, samples.data());
}

/// Samples as they would stand in a plain file. Integers may have fewer bytes than BITPIX says, or more.
void TileDecoder::FromBytes(std::uint64_t tile, Bytes bytes, std::span<float> samples) const
{
    const std::size_t size = bytes.size() / samples.size();
    const bool isWhole = bytes.size() % samples.size() == 0;
    const bool fits =
        layout_.image.bits > 0 ? size == 1 || size == 2 || size == 4 || size == 8 : size == BytesOf(layout_.image.bits);
    if (!isWhole || !fits) {
        throw DamagedData("it has " + std::to_string(bytes.size()) + " bytes for " + std::to_string(samples.size()) +
                          " samples");
    }
    ToSamples(layout_.image.bits > 0 ? static_cast<int>(size) * 8 : layout_.image.bits, bytes, ScaleOf(tile),
              samples.data());
}

void TileDecoder::DecodeCompressed(std::uint64_t tile, std::size_t width, std::span<float> samples,
                                   TileBuffers& buffers) const
{
    std::vector<std::int32_t>& values = buffers.values;
    values.resize(samples.size());
    switch (layout_.code) {
    case TileCode::kRice:
        tiles::DecodeRice(buffers.packed, layout_.valueBytes, layout_.blockSize, values);
        return FromValues(tile, values, samples);
    case TileCode::kPlio:
        tiles::DecodePlio(buffers.packed, values);
        return FromValues(tile, values, samples);
    case TileCode::kHcompress:
        tiles::DecodeHcompress(buffers.packed, width, layout_.smooth, values);
        return FromValues(tile, values, samples);
    case TileCode::kGzip:
    case TileCode::kShuffledGzip:
        Unpack(samples.size() * std::max<std::size_t>(BytesOf(layout_.image.bits), 4),
               layout_.code == TileCode::kShuffledGzip, buffers);
        break;
    case TileCode::kNone:
        buffers.bytes.swap(buffers.packed);
        break;
    }
    if (layout_.code == TileCode::kShuffledGzip) {
        buffers.bytes.resize(buffers.shuffled.size());
        Unshuffle(buffers.shuffled, buffers.shuffled.size() / samples.size(), buffers.bytes);
    }
    if (!layout_.isQuantised) {
        return FromBytes(tile, buffers.bytes, samples);
    }
    const std::size_t size = buffers.bytes.size() / samples.size();
    if (buffers.bytes.size() % samples.size() != 0 || (size != 1 && size != 2 && size != 4)) {
        throw DamagedData("it has " + std::to_string(buffers.bytes.size()) + " bytes for " +
                          std::to_string(samples.size()) + " whole numbers");
    }
    ToValues(buffers.bytes, values);
    FromValues(tile, values, samples);
}

void TileDecoder::DecodeColumns(std::uint64_t tile, std::size_t width, std::span<float> samples,
                                TileBuffers& buffers) const
{
    const std::size_t count = samples.size();
    if (ReadPacked(layout_.compressed, tile, count, buffers.packed)) {
        DecodeCompressed(tile, width, samples, buffers);
    } else if (ReadPacked(layout_.gzipped, tile, count, buffers.packed)) {
        Unpack(count * std::max<std::size_t>(BytesOf(layout_.image.bits), 4), false, buffers);
        FromBytes(tile, buffers.bytes, samples);
    } else if (ReadPacked(layout_.uncompressed, tile, count, buffers.packed)) {
        FromBytes(tile, buffers.packed, samples);
    } else {
        throw DamagedData("it holds no data");
    }
}

void TileDecoder::Decode(std::uint64_t tile, std::size_t width, std::span<float> samples, TileBuffers& buffers) const
{
    try {
        DecodeColumns(tile, width, samples, buffers);
    } catch (const DamagedData& damage) {
        throw FileError(file_.Name(), "is damaged in tile " + std::to_string(tile + 1) + ": " + damage.what());
    }
}

} // namespace corvane::io
