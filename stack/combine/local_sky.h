#pragma once

#include <memory>

#include "corvane/core/mapping.h"
#include "corvane/platform/export.h"
#include "stack/combine/offset_field.h"

namespace corvane::stack {

/// What a plane of a frame shows, and how the frame lies on the reference.
struct PlacedSky {
    const stars::CellGrid& blocks; ///< as `MeasureSkyBlocks` tells
    const Mapping& mapping;
};

/// What brings the sky of a plane of a light to that of another one, which it is multiplied by a factor to equal in its
/// stars, all over a reference of a size; null when they have nothing in common there.
///
/// Both are compared at places 16 pixels apart: what they both show, nebulae and galaxies as well as the sky, is gone
/// from their difference. Of each cell of about 128 pixels the mean of the middle half of the differences counts, so a
/// star on a block does not; a cell in which less than a quarter is known takes part as its neighbours do.
/// `OffsetField` makes the cells smooth. All of it is a sum over hundreds of pixels: the light of a star above the sky
/// around it stays.
CORVANE_VISIBLE std::shared_ptr<const OffsetField> OffsetsBetween(const PlacedSky& target, const PlacedSky& light,
                                                                  double factor, int width, int height);

} // namespace corvane::stack
