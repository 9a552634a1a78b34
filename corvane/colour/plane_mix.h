#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// A plane of an image, and what its samples are multiplied by.
struct WeightedPlane {
    const CStlImage* image;
    int plane;
    double weight;
};

/// Makes a plane of an image a number plus the sum of planes of images of its size, each times its weight, added in
/// their order in double precision. Planes of weight 0 are left out whatever they hold; a NaN of another stays one. The
/// image itself may be among them. Counts a step of the stage for each row; throws Cancelled.
CORVANE_VISIBLE void MixPlanes(const std::vector<WeightedPlane>& planes, double offset, CStlImage& result, int plane,
                               Stage& stage);

} // namespace corvane
