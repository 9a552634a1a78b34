#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Takes a part of what an operation has made of an image: each sample of the result becomes original + w * (result -
/// original) in double precision, with w = strength [0..1] times the sample of the mask [0..1]. The mask has one plane,
/// which counts for all; what is undefined in it is 0. Null is 1 everywhere.
///
/// A w of 1 leaves the result's bits, one of 0 brings back the original's; only a blank whose image has no such blank
/// value any more becomes NaN. Where one of both samples is undefined (blank, NaN or infinite) there is no mean: from a
/// w of 1/2 on the result's counts, and the original's below. Levels and all else of the result stay. All have one
/// size, result and original as many planes. Reports "Mixing with the image..."; throws Cancelled.
CORVANE_VISIBLE void MixImages(CStlImage& result, const CStlImage& original, const CStlImage* mask, double strength,
                               const Run& run);

} // namespace corvane
