#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/filter/cosmic_rays.h"
#include "stack/calibrate/calibrated_frames.h"

namespace corvane::stack {

/// Finds what cosmic rays have hit in a light as it is after calibration, by `FindCosmicRays` with its usual limits and
/// `catalogue::MeasureSampleNoise`. Of the run only its threads count.
LightHits FindCosmicHits(CalibratedFrames& lights, int light, bool isMosaic, const Run& run);

/// True of more hits than cosmic rays leave in a light: 1 % of its samples. It was no frame as the camera took it.
bool AreTooMany(const LightHits& hits, const FrameFacts& light);

} // namespace corvane::stack
