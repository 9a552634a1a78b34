#pragma once

#include <vector>

#include "corvane/platform/export.h"

namespace corvane::stack {

/// What a frame counts for in the mean.
enum class WeightMethod {
    kNone,  ///< all frames the same
    kNoise, ///< 1 / noise^2, which makes the noise of the mean the least
    kFwhm,  ///< 1 / FWHM^2: the part of a star's light that falls on its inner pixels
    kStars, ///< the number of stars seen
    kSnr,   ///< 1 / (noise FWHM)^2: the least noise on the disc of a star, to which what it shows of one is even
};

/// What is known of a frame's quality; 0 or less, or NaN, for what is not.
struct FrameQuality {
    double noise = 0.0; ///< standard deviation of a sample as it is combined: `FrameLevel::noise` times the factor
    double fwhm = 0.0;  ///< of its stars [pixels]
    double stars = 0.0; ///< how many of the reference's stars it shows
};

/// The weights of frames [0..1], the best frame's 1. A frame of which the measure is not known gets 0, which leaves it
/// out. If it is known of no frame all get 1. The noise: A. C. Aitken, On least squares and linear combination of
/// observations, Proceedings of the Royal Society of Edinburgh 55, 1935.
CORVANE_VISIBLE std::vector<double> WeightsOf(const std::vector<FrameQuality>& frames, WeightMethod method);

} // namespace corvane::stack
