#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::catalogue {

/// Before an image is written to: copies its samples where another image has them, too, so that whoever gave them keeps
/// them as they are.
void OwnSamples(CStlImage& image);

} // namespace corvane::catalogue
