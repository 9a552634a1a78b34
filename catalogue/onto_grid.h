#pragma once

#include <vector>

#include "corvane/core/mapping.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// An image as it lies on the grid of another, of that width and height: read by Lanczos' kernel of six samples, as the
/// lights of a stack are, where the mapping has the pixels of the grid; at whole pixels the samples themselves. Samples
/// between which an undefined one lies are undefined; `outside` stands, plane by plane, where the image is not. Record
/// and levels are the image's, its standard centre is the middle. It must use no blank value. Throws Cancelled.
CORVANE_VISIBLE CStlImage OntoGrid(const CStlImage& image, const Mapping& mapping, int width, int height,
                                   const std::vector<double>& outside, const Run& run);

} // namespace corvane::catalogue
