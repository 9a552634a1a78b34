#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::catalogue {

/// For colours that are combined by what the screen shows: gives an image that came without display levels a black that
/// lies three standard deviations below each plane's sky, so that the sky is nearly grey and none of it is cut off.
/// White stays at each plane's largest sample, so that no star is cut off either.
void GiveSkyBlack(CStlImage& image);

} // namespace corvane::catalogue
