#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "corvane/colour/demosaic.h"
#include "corvane/core/point.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "stack/calibrate/frame_set.h"
#include "stack/options.h"

namespace corvane::stack {

/// The frames of a `CalibrationSet`. Sets with the same files of a kind share them.
struct CalibrationFrames {
    std::shared_ptr<FrameSet> bias;
    std::shared_ptr<FrameSet> darks;
    std::shared_ptr<FrameSet> flats;
    std::shared_ptr<FrameSet> flatDarks;
    bool flatsAreCalibrated = false;
    std::optional<double> darkExposure;    ///< of all darks [s]
    std::optional<double> darkTemperature; ///< mean of those that say theirs [degrees Celsius]
};

/// All frames of a job, known to exist and to fit together.
struct Plan {
    FrameSet lights;
    std::vector<CalibrationFrames> sets; ///< one or more
    std::vector<std::size_t> setOf;      ///< for each light, its set
    FrameSet onto;                       ///< the frame from outside the night that lights are placed on; or none
    int width = 0;
    int height = 0;
    int planes = 0;

    /// What lights are placed on, as large as they are or as the frame from outside.
    const io::FrameReader& Base() const { return onto.IsEmpty() ? lights.Reader(0) : onto.Reader(0); }

    std::vector<std::optional<double>> exposures; ///< of the lights [s]
    std::vector<double> darkScales;               ///< for each light, what its dark is multiplied by
    bool isMosaic = false;                        ///< the lights are mosaics of colour filters
    std::vector<BayerPattern> patterns;           ///< of each light, when colours are to be made of them
    std::vector<std::string> notes;

    /// About which lights are turned: a whole number of pixels, as `CStlImage::SetDefaultCenter` has it.
    CfPoint Centre() const { return {width / 2, height / 2}; }
    /// Those of the stack: colours are made of mosaics.
    int StackPlanes() const { return patterns.empty() ? planes : 3; }

    const CalibrationFrames& SetOf(int light) const { return sets[setOf[static_cast<std::size_t>(light)]]; }
};

/// True when a dark of one exposure can be taken off a light of the other as it is: they differ by at most 0.5 % or
/// 0.05 s, or one of them is not known.
bool ExposuresMatch(const std::optional<double>& light, const std::optional<double>& dark);

/// Opens every frame and checks sizes, planes and exposures. Reads no samples. Throws Error and Cancelled.
CORVANE_VISIBLE Plan MakePlan(const Options& options, const Run& run);

} // namespace corvane::stack
