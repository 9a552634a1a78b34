#pragma once

#include <string>

#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// Gives a frame the brightness with which it is shown on a screen. `stretch` is "auto" (as the step `autostretch`),
/// "asinh" (the same with the colours of stars), "linear" (levels from the sky), or empty: the levels that a step of
/// this library has set, else auto. Levels of camera programs are guesses that mostly show noise, and do not count.
///
/// A colour image whose skies a step has brought to one value, as HISTORY says, is stretched as one, so that its
/// colours stay: `neutral-sky`, `lrgb`, or `rgb`, `cmy` and `palette` with a balance. Of any other each plane goes by
/// itself, so that the sky is grey. Throws Error for another word.
CORVANE_VISIBLE void MakeShown(io::Frame& frame, const std::string& stretch = {});

/// Makes a frame whose longer side has more pixels than that so small; 0 leaves it.
CORVANE_VISIBLE void Reduce(io::Frame& frame, int size);

} // namespace corvane::catalogue
