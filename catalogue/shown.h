#pragma once

#include <string>

#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// Gives a frame the brightness with which it is shown on a screen. `stretch` is "auto" (as the step `autostretch`, each
/// plane by itself, so that the sky is grey), "asinh" (the same with the colours of stars), "linear" (levels from the
/// sky), or empty: the levels that a step of this library has set, else auto. Levels of camera programs are guesses that
/// mostly show noise, and do not count. Throws Error for another word.
CORVANE_VISIBLE void MakeShown(io::Frame& frame, const std::string& stretch = {});

/// Makes a frame whose longer side has more pixels than that so small; 0 leaves it.
CORVANE_VISIBLE void Reduce(io::Frame& frame, int size);

} // namespace corvane::catalogue
