#pragma once

#include <vector>

#include "catalogue/placement.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// Makes the first frame's header that of a colour image made of all frames: takes away what holds for one filter alone
/// (the filter, the exposure unless all have the same, extremes, the colour filter mosaic). Adds to HISTORY where stars
/// brought each frame, and filter and exposure of each as far as its header says.
void DescribeColour(std::vector<io::Frame>& frames, const std::vector<Fit>& fits);

/// Whether all frames came with display levels of their own.
bool HaveOwnLevels(const std::vector<io::Frame>& frames);

/// Takes away the extremes that a header states: the samples are others now.
void DropExtremes(io::Header& header);

} // namespace corvane::catalogue
