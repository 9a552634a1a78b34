#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "stack/calibrate/light_frames.h"
#include "stack/calibrate/raw_lights.h"
#include "stack/combine/normalise.h"
#include "stack/frame_report.h"
#include "stack/options.h"
#include "stars/cell_grid.h"
#include "stars/find_stars.h"

namespace corvane::stack {

/// What was measured of a light besides what its report tells.
struct SeenLight {
    std::vector<stars::FieldStar> stars; ///< the brightest of those that can be used, then of the others
    std::vector<FrameLevel> levels;      ///< of each plane
    std::vector<stars::CellGrid> sky;    ///< of each plane, to normalise locally: a number for 256 samples
    CStlImage thumbnail;                 ///< for a report
};

/// Measures of some lights what the options ask for, and enters it in their reports. Of a light without a defined
/// sample all is 0. Which stars are saturated is told by the raw lights. No lights are read, and nothing is seen, when
/// the options ask for nothing. Throws Error and Cancelled.
std::vector<SeenLight> MeasureLights(const Options& options, const std::vector<int>& lights, LightFrames& frames,
                                     RawLights& raw, std::vector<FrameReport>& reports, const Run& run);

/// Finds the stars of a calibrated light. Which of them are saturated is told by the same light as its file has it.
stars::StarField FindLightStars(const CStlImage& raw, CStlImage calibrated, const Run& run);

/// The stars of a finished frame that lights are matched with, as those of a light.
std::vector<stars::FieldStar> FindFrameStars(const CStlImage& image, const Run& run);

/// Leaves out the lights whose width of stars, number of stars or background lie beyond the limits of the options,
/// counted in standard deviations of the set about its median (`MeasureLevel`). Of a set that hardly differs a
/// hundredth of the median counts as one.
void ApplyLimits(const Options& options, std::vector<FrameReport>& reports);

} // namespace corvane::stack
