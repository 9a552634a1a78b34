#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Fills the undefined samples of an image (blank, NaN or infinite) from those about them, each plane by itself; the
/// others keep their values, and the image uses no blank value any more.
///
/// A hole closes ring by ring. Each sample of a ring, which are those with a defined one among their eight neighbours,
/// becomes the mean of these, weighted by the inverse square of the distance: 1 beside, 1/2 across. All samples of a
/// ring are made of the rings before, so that the result does not depend on any order; the time grows with the number
/// of samples alone, however large a hole is. Works on one thread, since each ring is found from the one before. A
/// plane without a defined sample becomes NaN all over. Reports "Filling undefined samples...". Returns how many
/// samples were undefined.
CORVANE_API long long FillFromNeighbours(CStlImage& image, const Run& run);

/// Gives the undefined samples of each plane the value of that plane; returns how many there were.
CORVANE_API long long FillWithValues(CStlImage& image, const std::vector<double>& values);

} // namespace corvane
