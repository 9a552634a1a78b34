#pragma once

#include "corvane/core/stl_image.h"

namespace corvane::catalogue {

/// Chooses levels; see CImgAutoLevel. The image changes hands for it: its samples are not copied.
void SetAutoLevels(CStlImage& image, double lowSigma, double highSigma, bool perPlane, const CRect* rect);

/// The sky of an image: mean and standard deviation of its samples, bright ones left out in monochrome images.
struct Sky {
    double mean;
    double sigma;
};

/// Measures the sky.
Sky MeasureSky(const CStlImage& image);

/// For operations that work by what the screen shows: an image that came without display levels, and so has those of
/// its extreme samples, with levels as many standard deviations below and above its sky; another as it is. The samples
/// are those of the image.
CStlImage WithLevels(const CStlImage& image, double lowSigma, double highSigma);

} // namespace corvane::catalogue
