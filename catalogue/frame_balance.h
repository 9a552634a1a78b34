#pragma once

#include <string>
#include <vector>

#include "catalogue/parameter.h"
#include "catalogue/placement.h"
#include "corvane/core/run.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// The parameter `balance`: how frames come to the brightness of the first.
Parameter BalanceParameter(const std::string& usual);

/// What its words stand for, for the help of an operation.
inline constexpr const char* kBalanceHelp =
    " With balance = sky a number is added to each of the other frames, so that all skies have the value of the first. "
    "With stars they are multiplied before, so that the median star is equally bright in all and comes out white; with "
    "light, so that the brightest half percent of blocks of 16 pixels, which is nebula, rises as far above the sky; a "
    "rise of less than twice the noise of a sample counts as that. The first frame is never changed. A note and "
    "HISTORY tell the numbers.";

/// Brings frames to the brightness of the first as the word of the parameter says. One plane of each is compared, as
/// its fit lays it onto the first; its levels follow. Adds what was done to the HISTORY of the first. Frames use no
/// blank values. Throws Error where a frame does not show what it is compared by, and Cancelled.
void Balance(std::vector<io::Frame>& frames, const std::vector<int>& planes, const std::vector<Fit>& fits,
             const std::string& how, const Run& run);

} // namespace corvane::catalogue
