#pragma once

#include "io/frame.h"

namespace corvane::catalogue {

/// Makes every undefined sample of a frame NaN, and its image use no blank value: so undefined samples of frames with
/// different blank values stay undefined when they are calculated with. Throws io::Error when no sample is defined.
void MarkUndefined(io::Frame& frame);

} // namespace corvane::catalogue
