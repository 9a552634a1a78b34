#pragma once

#include "corvane/core/mapping.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stars {

/// One plane of an image.
struct ImagePlane {
    const CStlImage& image;
    int plane;
};

/// How many times brighter stars are in one frame than in another.
struct LightRatio {
    double ratio = 1.0; ///< the median over the stars
    double error = 0.0; ///< standard error of it, by how far the stars scatter
    int stars = 0;      ///< how many tell it
};

/// Measures the light of stars in one frame over that of the same stars in another, as this is brought onto the grid of
/// the first by a mapping of places in the first to those in the other: a frame with larger pixels has less light on
/// the smaller ones. Counted are the brightest 300 stars that are usable in both, saturated in neither, and lie 20
/// deviations above the sky. Light is the sum within 1.5 FWHM of each frame above the median of a ring about the star.
/// Throws Cancelled.
CORVANE_VISIBLE LightRatio MeasureLightRatio(const ImagePlane& first, const ImagePlane& other, const Mapping& mapping,
                                             const Run& run = {});

} // namespace corvane::stars
