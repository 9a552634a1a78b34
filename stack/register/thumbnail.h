#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::stack {

/// A plane of an image, made so small that its longer side is at most `longest` pixels: the means of what is defined in
/// squares of as many pixels as it takes, NaN where nothing is.
CStlImage Thumbnail(const CStlImage& image, int plane, int longest);

} // namespace corvane::stack
