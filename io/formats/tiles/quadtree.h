#pragma once

#include <cstdint>

#include "io/formats/tiles/bit_reader.h"

namespace corvane::io::tiles {

/// A part of an array of numbers; rows lie `stride` apart.
struct Block {
    std::int64_t* values;
    std::size_t stride;
    std::size_t rows;
    std::size_t columns;
};

/// Reads `planes` bit planes, the highest first, into a block that is zero (White et al. 1992, Digital Optical Disks
/// and the Astronomical Data Archives; FITS standard 4.0, section 10.4.4). Each plane is a quadtree whose nodes have
/// prefix codes, or where those do not pay its lowest level as it is. Throws DamagedData.
void DecodeBitPlanes(BitReader& bits, int planes, const Block& block);

} // namespace corvane::io::tiles
