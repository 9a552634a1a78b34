#pragma once

#include <optional>
#include <vector>

#include "io/formats/fits_file.h"

namespace corvane::io {

/// How the data of tiles are coded.
enum class TileCode { kRice, kGzip, kShuffledGzip, kPlio, kHcompress, kNone };

/// A column of a table of tiles.
struct TileColumn {
    std::uint64_t offset = 0; ///< of the field in a row
    char type = ' ';          ///< of the values, in the field or in the heap, as TFORM has it
    char descriptor = ' ';    ///< 'P' or 'Q': the field tells where in the heap the values are; ' ': it holds one value
};

/// What the header of a tile-compressed image says, checked as a whole (FITS standard 4.0, section 10).
struct TileLayout {
    FitsImage image;
    std::vector<long long> tile;  ///< sizes of a whole tile along each axis
    std::vector<long long> tiles; ///< how many there are along each axis
    TileCode code = TileCode::kNone;
    int blockSize = 32; ///< of Rice codes
    int valueBytes = 4; ///< of Rice codes
    bool smooth = false;

    /// @name Quantised floats
    /// @{
    bool isQuantised = false;
    bool isDithered = false;
    bool keepsZero = false;
    long long ditherStart = 1; ///< ZDITHER0
    double scale = 1.0;        ///< ZSCALE, unless it is a column
    double zero = 0.0;
    std::optional<long long> undefined; ///< ZBLANK, unless it is a column; of integers too
    /// @}

    /// @name The table
    /// @{
    std::uint64_t rows = 0; ///< where they begin in the file
    std::uint64_t rowBytes = 0;
    std::uint64_t heap = 0; ///< where it begins in the file
    std::uint64_t heapBytes = 0;
    std::optional<TileColumn> compressed;
    std::optional<TileColumn> gzipped;      ///< tiles that the code would not have kept exactly
    std::optional<TileColumn> uncompressed; ///< and those that it would not have made smaller
    std::optional<TileColumn> scaleColumn;
    std::optional<TileColumn> zeroColumn;
    std::optional<TileColumn> undefinedColumn;
    /// @}

    std::size_t TileSamples() const; ///< of a whole tile
};

/// Reads the layout. Throws Error, naming the card, when anything in it makes no sense.
TileLayout ReadTileLayout(const FitsHdu& hdu);

} // namespace corvane::io
