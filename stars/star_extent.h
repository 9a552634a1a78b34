#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/find_stars.h"

namespace corvane::stars {

/// The part of a frame that a star's light covers: all that lies within a radius of a line along a row, which for most
/// is a point.
struct StarExtent {
    double x;            ///< the left end of the line [pixels]
    double y;            ///< likewise
    double length = 0.0; ///< of the line [pixels]
    double radius = 0.0; ///< [pixels]
};

/// How far the light of the stars of a plane reaches: to where the median about a star, ring by ring, is less than
/// `limit` times the noise above its sky, or above the nebula or the other stars that it stands on, which show in the
/// ring two widths away. Its wings are those of a Moffat profile of exponent 2 at most. The halo of a saturated star is
/// followed as far as it falls; what is saturated belongs to a star wherever it lies, as trails along columns do.
///
/// Hot pixels below the ceiling are no stars, nor are galaxies and others that are more than 2.5 times as wide as the
/// field's stars. Undefined samples are passed over. Throws Cancelled when the run asks to stop.
CORVANE_VISIBLE std::vector<StarExtent> MeasureExtents(const CStlImage& image, int plane, const StarField& field,
                                                       double limit, const Run& run);

} // namespace corvane::stars
