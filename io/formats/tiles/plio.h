#pragma once

#include <cstdint>
#include <span>

#include "io/formats/bytes.h"

namespace corvane::io::tiles {

/// Decodes a list of runs of 16-bit words, as masks are stored (FITS standard 4.0, section 10.4.3). Values behind the
/// end of the list are 0. Throws DamagedData.
void DecodePlio(Bytes packed, std::span<std::int32_t> values);

} // namespace corvane::io::tiles
