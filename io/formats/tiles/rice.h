#pragma once

#include <cstdint>
#include <span>

#include "io/formats/bytes.h"

namespace corvane::io::tiles {

/// Decodes Rice-coded differences of neighbours (FITS standard 4.0, section 10.4.1): values of `valueBytes` bytes
/// [1, 2, 4; of one byte they have no sign], which share a code in blocks of `blockSize` [1 or more]. Throws
/// DamagedData.
void DecodeRice(Bytes packed, int valueBytes, int blockSize, std::span<std::int32_t> values);

} // namespace corvane::io::tiles
