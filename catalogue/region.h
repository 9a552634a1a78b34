#pragma once

#include <vector>

#include "corvane/core/stl_image.h"

namespace corvane::catalogue {

/// What the samples of one plane of a region are like. Without a sample that counts, the first four mean nothing.
struct RegionMeasures {
    double max = 0.0;
    double min = 0.0;
    double mean = 0.0;
    double median = 0.0; ///< of an even number of samples the upper of the two in the middle
    long long counted = 0;
    long long blank = 0;    ///< samples that equal the image's blank value; they are left out
    long long infinite = 0; ///< NaN and infinities; they are left out
};

/// Measures each plane of a rectangle in the image, or with null of the whole image.
std::vector<RegionMeasures> MeasureRegion(const CStlImage& image, const CRect* rect);

} // namespace corvane::catalogue
