#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::catalogue {

/// The sky of an image: mean and standard deviation of its samples, bright ones left out in monochrome images.
struct Sky {
    double mean;
    double sigma;
};

/// Measures the sky. The image keeps its samples and levels; those that `SetOrgLevel` saved are replaced.
Sky MeasureSky(CStlImage& image);

/// For operations that work by what the screen shows: gives an image that came without display levels, and so has
/// those of its extreme samples, levels as many standard deviations below and above its sky.
void GiveLevels(CStlImage& image, double lowSigma, double highSigma);

} // namespace corvane::catalogue
