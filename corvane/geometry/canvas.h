#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// Gives `target` a canvas of another size, whose samples are still to be written, and keeps the rest of its record.
/// Reports "Changing canvas size...". Returns 0, with samples and size kept, when a side is below 1 or more than an int
/// holds, or there is no room.
///
/// An operation whose source is the target itself finds its old samples in the new canvas, as far as they fit.
int MakeCanvas(CStlImage& target, const CStlImage& source, long long width, long long height, const Run& run);

} // namespace corvane
