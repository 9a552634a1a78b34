#pragma once

#include <optional>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// Where an image is most like a cut-out.
struct CutOutPlace {
    double x;           ///< column of the image on which the cut-out's first sample falls, to a part of a pixel
    double y;           ///< row
    double correlation; ///< -1..1, at the nearest whole column and row: 1 where only pedestal and gain differ
    double rms;         ///< root of the mean squared difference that is left there once both are matched [raw units]
    double rival;       ///< the correlation at the best of places that are half the cut-out's size away; -1 for none
};

/// Finds where an image is most like a cut-out, by normalised cross-correlation: at each place, mean and deviation of
/// the samples under the cut-out are taken first, so neither the brightness of the two counts nor what lies around.
/// Planes have means of their own and one correlation.
///
/// `places` are the columns and rows of the image that are tried for the cut-out's first sample, right and bottom
/// exclusive; the cut-out must lie whole in the image at each, and both must have as many planes. Transforms in single
/// precision choose a few candidates (J. P. Lewis, Fast normalized cross-correlation, Vision Interface 1995). Their
/// correlation is then summed in double, and the best one refined by the paraboloid through its neighbours: to a tenth
/// of a pixel where what the cut-out shows is wider than two pixels.
///
/// Blanks, NaN and infinities take no part in that sum (to choose candidates, the sample before them in the row stands
/// for them); a place that leaves less than half of the cut-out is none. Nor is one that is flat: whose deviation is 0,
/// or so small beside what lies within some 512 pixels that the transforms' rounding hides it (2e-5 of the root of its
/// sum of squares).
///
/// Reports "Processing object matching...". Returns nothing when there is no place to
/// compare, as for a cut-out of one value. Throws Cancelled, and std::bad_alloc when there is no room.
CORVANE_VISIBLE std::optional<CutOutPlace> FindCutOut(const CStlImage& cutOut, const CStlImage& image,
                                                      const CRect& places, const Run& run);

} // namespace corvane
