#pragma once

#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "stack/frame_report.h"
#include "stack/options.h"
#include "stack/register/measure_lights.h"

namespace corvane::stack {

/// Lights as `MeasureLights` saw them.
struct MeasuredLights {
    const std::vector<SeenLight>& seen;
    const std::vector<std::optional<double>>& exposures; ///< [s], as far as they are known
    CfPoint centre;                                      ///< what lights are turned about
};

/// Chooses a reference, matches the stars of every light with those of it, and enters in the reports how each is placed.
/// Returns the reference: the light that the options name, or of those with at least three quarters of the most stars
/// the one whose stars are narrowest; where fewer than half of the lights fit it, which may be one that shows another
/// field, the next ones are tried.
///
/// A light that cannot be placed with certainty is left out, with the reason, and so is one whose stars have less than a
/// third of the light that its exposure should bring. Throws Error when there is no star to align by, and Cancelled.
int AlignByStars(const Options& options, const MeasuredLights& lights, std::vector<FrameReport>& reports,
                 const Run& run);

} // namespace corvane::stack
