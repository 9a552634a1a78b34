#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "stack/calibrate/light_frames.h"
#include "stack/calibrate/raw_lights.h"
#include "stack/frame_report.h"
#include "stack/options.h"

namespace corvane::stack {

/// Finds a patch of the reference in every other light, to a tenth of a pixel (`stars::Patch`), and enters in the
/// reports how each is placed. Returns the centre of the patch: what the options name, or the brightest usable star
/// whose patch shows nothing brighter and lies inside, without another star nearly as bright within the search, and
/// farther from the edges than the search goes. Failing that, these count in this order; of rivals the faintest. Stars
/// of less than half the brightest one do not count.
///
/// A match is believed only if it
/// - does not lie at the edge of the search range,
/// - correlates with the patch by 0.7 or more,
/// - is between a third of and three times as bright, and stands 8 sigma above the noise,
/// - has its peak well inside the light, and there a centroid that agrees with the match to 0.25 pixels: nothing else
///   lies on it,
/// - and is confirmed by other stars: of the brightest of the reference within 256 pixels, at least half of those that
///   the light should show are in their places, and three of them or more (two where the reference has three or four).
///
/// If they do not confirm it, another star was found, which is taken out for another attempt. Where the reference has
/// no more than two such stars, a correlation of 0.9, nearly the same brightness and that there is no other such match
/// stand in for them. A light without a match that is believed is left out, with the reason. Throws Error when the
/// reference shows no star and the options name no place, and Cancelled.
PixelPlace AlignByShift(const Options& options, LightFrames& frames, RawLights raw, std::vector<FrameReport>& reports,
                        const Run& run);

} // namespace corvane::stack
