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
    stars::Area area;                                    ///< of each: from the first pixel to the last
    stars::Area reference;                               ///< what maps have to hold for, at most
    std::vector<stars::FieldStar> onto{};                ///< those of a frame from outside that they are placed on
};

/// Chooses a reference, matches the stars of every light with those of it, and enters in the reports how each is
/// placed. Returns the reference: the light that the options name, or of those with at least three quarters of the most
/// stars the one whose stars are narrowest; where fewer than half of the lights fit it, which may be one that shows
/// another field, the next ones are tried.
///
/// Where the options and the stars ask for more than a shift, a turn and a scale, `ChooseMap` adds it, such as holds
/// for the part of the reference that a light shows.
///
/// With a frame from outside the options, all lights are placed on that, and the first of those that fit is the
/// reference to which the others' light is compared.
///
/// A light that cannot be placed with certainty is left out, with the reason, and so is one whose stars have less than
/// a third of the light that its exposure should bring. Throws Error when there is no star to align by, and Cancelled.
int AlignByStars(const Options& options, const MeasuredLights& lights, std::vector<FrameReport>& reports,
                 const Run& run);

} // namespace corvane::stack
