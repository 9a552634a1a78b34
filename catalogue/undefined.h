#pragma once

#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// What a step that undefined samples would spoil advises.
inline constexpr const char* kFillThem = "fill them with the step fill";

/// Makes every undefined sample of a frame NaN, and its image use no blank value: so undefined samples of frames with
/// different blank values stay undefined when they are calculated with. Throws Error when no sample is defined.
CORVANE_VISIBLE void MarkUndefined(io::Frame& frame);

} // namespace corvane::catalogue
