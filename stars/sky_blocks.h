#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/cell_grid.h"

namespace corvane::stars {

/// The mean of the middle half of values without NaN, which are sorted for it; 0 of none. As the median it hardly sees
/// a quarter of outliers on either side, but with 1.09 times the noise of the mean where the median has 1.25 times.
CORVANE_VISIBLE double MiddleMean(std::vector<float>& values);

/// The blocks of an image of that size [pixels, 1 or more], all unknown.
CORVANE_VISIBLE CellGrid UnknownSkyBlocks(int width, int height);

/// What a plane shows in blocks of 16 pixels: the mean of the middle half of all samples of each. Nebulae are part of
/// it, stars hardly are. Blanks, NaN and infinities are passed over; a block that lacks more than an eighth of its
/// samples is unknown, since the others tell of another place. What is left beside whole blocks is not looked at. Of
/// the run only its threads count.
CORVANE_VISIBLE CellGrid MeasureSkyBlocks(const CStlImage& image, int plane, const Run& run = {});

} // namespace corvane::stars
