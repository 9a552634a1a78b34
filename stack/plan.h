#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/colour/demosaic.h"
#include "corvane/core/run.h"
#include "stack/calibrate/frame_set.h"
#include "stack/options.h"

namespace corvane::stack {

/// All frames of a job, known to exist and to fit together.
struct Plan {
    FrameSet lights;
    FrameSet bias;
    FrameSet darks;
    FrameSet flats;
    FrameSet flatDarks;
    int width = 0;
    int height = 0;
    int planes = 0;
    std::vector<std::optional<double>> exposures; ///< of the lights [s]
    std::optional<double> darkExposure;           ///< of all darks [s]
    bool isMosaic = false;                        ///< the lights are mosaics of colour filters
    std::vector<BayerPattern> patterns;           ///< of each light, when colours are to be made of them
    std::vector<std::string> notes;
};

/// True when a dark of one exposure can be taken off a light of the other as it is: they differ by at most 0.5 % or
/// 0.05 s, or one of them is not known.
bool ExposuresMatch(const std::optional<double>& light, const std::optional<double>& dark);

/// Opens every frame and checks sizes, planes and exposures. Throws Error and Cancelled.
Plan MakePlan(const Options& options, const Run& run);

} // namespace corvane::stack
