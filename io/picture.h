#pragma once

#include <string>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::io {

/// Writes an 8-bit PNG of the image as it shows on the screen: through its display levels, grey or RGB.
///
/// With bottomUp the last row comes first in the picture (FITS; `IsBottomUp` tells). NaN shows black. The file appears
/// whole or not at all. Throws Error.
CORVANE_VISIBLE void SavePicture(const std::string& path, const CStlImage& image, bool bottomUp);

/// The same PNG, in memory.
CORVANE_VISIBLE std::string EncodePicture(const CStlImage& image, bool bottomUp);

} // namespace corvane::io
