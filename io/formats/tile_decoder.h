#pragma once

#include <vector>

#include "io/formats/fits_samples.h"
#include "io/formats/tile_layout.h"

namespace corvane::io {

/// Work memory of one decoder, kept from tile to tile.
struct TileBuffers {
    std::vector<unsigned char> packed;
    std::vector<unsigned char> bytes;
    std::vector<unsigned char> shuffled;
    std::vector<std::int32_t> values;
};

/// Bytes that decoding one tile may take, its samples and the buffers together.
std::uint64_t TileMemory(const TileLayout& layout);

/// Decodes tiles of an image, each by itself.
class TileDecoder {
public:
    TileDecoder(FitsFile& file, const TileLayout& layout, const StoredScale& scale)
        : file_(file), layout_(layout), scale_(scale)
    {}

    /// Decodes a tile, counted from 0 in the order of the table's rows; `width` samples are a row of it. Throws Error.
    void Decode(std::uint64_t tile, std::size_t width, std::span<float> samples, TileBuffers& buffers) const;

private:
    void ReadField(const TileColumn& column, std::uint64_t tile, MutableBytes bytes) const;
    template <class Number> // whole numbers of columns of whole numbers alone
    Number ReadNumber(const TileColumn& column, std::uint64_t tile) const;
    bool ReadPacked(const std::optional<TileColumn>& column, std::uint64_t tile, std::size_t count,
                    std::vector<unsigned char>& packed) const;
    void DecodeColumns(std::uint64_t tile, std::size_t width, std::span<float> samples, TileBuffers& buffers) const;
    void DecodeCompressed(std::uint64_t tile, std::size_t width, std::span<float> samples, TileBuffers& buffers) const;
    void Unpack(std::size_t mostBytes, bool shuffled, TileBuffers& buffers) const;
    void FromBytes(std::uint64_t tile, Bytes bytes, std::span<float> samples) const;
    void FromValues(std::uint64_t tile, std::span<const std::int32_t> values, std::span<float> samples) const;
    StoredScale ScaleOf(std::uint64_t tile) const;

    FitsFile& file_;
    const TileLayout& layout_;
    StoredScale scale_;
};

} // namespace corvane::io
