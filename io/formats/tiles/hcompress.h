#pragma once

#include <cstdint>
#include <span>

#include "io/formats/bytes.h"

namespace corvane::io::tiles {

/// Decodes a tile of Hcompress (FITS standard 4.0, section 10.4.4): the bit planes of the quantised coefficients of an
/// H-transform. `values` are rows of `width` values, a whole number of them. Takes 17 bytes of memory a value. Throws
/// DamagedData.
void DecodeHcompress(Bytes packed, std::size_t width, bool smooth, std::span<std::int32_t> values);

} // namespace corvane::io::tiles
