#pragma once

#include <vector>

#include "corvane/core/stl_image.h"
#include "stack/frame_report.h"

namespace corvane::stack {

/// Rows of a stack, with all that combining them tells. Counts and sums of several bands add up to those of the stack.
struct Band {
    int firstRow = 0;    ///< of the stack
    int firstJudged = 0; ///< row of the reference that rejected values were counted from; of a drizzled stack another
    CStlImage image;     ///< its samples; a blank is declared where nothing is known
    /// @name What is known of each sample, as `Result` has it; empty images for what was not asked for
    /// @{
    CStlImage coverage;
    CStlImage weights;
    CStlImage rejected;
    CStlImage noise;
    /// @}
    std::vector<char> shows;                  ///< for each light, whether it has a sample here that is defined
    std::vector<RejectedValues> rejectedOf{}; ///< of each light; empty: not counted
    CStlImage rejectedPlaces;                 ///< as `Registration` has it
};

} // namespace corvane::stack
