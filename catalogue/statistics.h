#pragma once

#include <vector>

#include "corvane/platform/export.h"
#include "io/reader.h"

namespace corvane::catalogue {

/// What the samples of one plane are like.
struct PlaneStatistics {
    double min = 0.0;  ///< smallest finite sample that is not blank; 0 when there is none
    double max = 0.0;  ///< largest of them
    double mean = 0.0; ///< their mean
    long long counted = 0;
    long long blank = 0;    ///< samples that equal the frame's blank value
    long long infinite = 0; ///< NaN and infinities
};

/// Reads the frame once, in bands of rows, and tells of each plane. Throws Error.
CORVANE_VISIBLE std::vector<PlaneStatistics> ReadStatistics(io::FrameReader& reader);

} // namespace corvane::catalogue
