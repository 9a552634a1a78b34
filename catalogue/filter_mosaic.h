#pragma once

#include "corvane/core/image.h"
#include "io/header.h"
#include "io/sky.h"

namespace corvane::catalogue {

/// Makes the cards that describe a colour filter mosaic (BAYERPAT and its other names, XBAYROFF, YBAYROFF) say what
/// lies over the pixels of `result` after a step that only moves those of `source`: whole pixels, no scale. A pattern
/// that is not 2 x 2 is taken away.
void CarryMosaic(const io::PixelMap& map, const CImage& source, const CImage& result, io::Header& header);

/// Takes these cards away: the samples are no longer those of single filters.
void DropMosaic(io::Header& header);

} // namespace corvane::catalogue
