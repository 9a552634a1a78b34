#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::stack {

/// A star and its surroundings, to be found in other frames.
struct Patch {
    CStlImage image;
    double level = 0.0; ///< of the sky in it and where it is looked for
    double peak = 0.0;  ///< of the star above the sky
    int plane = 0;      ///< in which the star was found
    int peakX = 0;      ///< its place in the patch
    int peakY = 0;
};

/// How well a place of an image is like a patch.
struct Likeness {
    double correlation = 0.0; ///< Pearson's coefficient [-1..1]
    double gain = 0.0;        ///< so many times the patch's brightness
    double drift = 0.0;       ///< of the star's centroid from that in the patch, the larger of both axes [pixels]
};

/// Compares a patch with what lies at a place of an image that has its planes and level of the sky. What differs by
/// more than 0.3 of the star's peak belongs to one of the two alone (tracks, trails) and is passed over.
Likeness Compare(const CStlImage& image, double x, double y, const Patch& patch);

} // namespace corvane::stack
