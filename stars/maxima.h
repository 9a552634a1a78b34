#pragma once

#include <cstddef>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "stars/sky_mesh.h"

namespace corvane::stars {

/// A sample that no neighbour surpasses in the smoothed frame.
struct Maximum {
    int x;
    int y;
    float excess; ///< of the smoothed frame above the sky [raw units]
};

/// Local maxima of one plane that rise `sigmas` standard deviations above the sky, at most `limit`, the brightest, in
/// reading order.
///
/// The frame is smoothed with the weights 1, 2, 1 along both axes, which suits stars of a FWHM of two pixels and more;
/// the deviation is that of the smoothed sky. Undefined samples (blanks, NaN, infinities) and those beyond the edges
/// count as sky. Of equal neighbours the first in reading order is the maximum. Of the run only its threads count.
std::vector<Maximum> FindMaxima(const CStlImage& image, int plane, const SkyMesh& sky, double sigmas, std::size_t limit,
                                const Run& run);

} // namespace corvane::stars
