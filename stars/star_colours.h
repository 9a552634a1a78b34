#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stars {

/// The median colour of stars.
struct StarColours {
    double red = 1.0;  ///< light in the red plane over that in the green one
    double blue = 1.0; ///< the same for blue
    int stars = 0;     ///< how many tell it
};

/// Measures the colours of the stars of three planes: of those found in green that are usable, lie 20 deviations above
/// the sky there, and are saturated or undefined in no plane. Light is the sum within 1.5 FWHM above the median of a
/// ring about it. Throws Cancelled.
CORVANE_VISIBLE StarColours MeasureStarColours(const CStlImage& image, const Run& run = {});

} // namespace corvane::stars
