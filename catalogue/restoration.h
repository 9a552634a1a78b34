#pragma once

#include <functional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/restore/region.h"
#include "io/frame.h"

namespace corvane::catalogue {

inline constexpr double kFwhmOfSigma = 2.354820045028949; ///< of a Gaussian

/// How much memory a restoration of so many samples takes [bytes].
using BytesOfRegion = std::function<double(int width, int height, int planes)>;

/// Throws Error, which names the first of them, when a region of an image (null: all of it) has samples that are blank,
/// NaN or infinite: restorations would spread them. Throws Error, too, when the work would take more than the memory
/// budget.
void CheckRestorable(const CStlImage& image, const CRect* rect, const BytesOfRegion& bytesOf);
/// The same for an iterative engine.
void CheckRestorable(const CStlImage& image, const CRect* rect, const RestorationNeeds& needs = {});

/// The blur of an image as its clear stars show it [pixels, as the sigma of a Gaussian], by the star finder's width.
/// Throws Error when there are none, and Cancelled.
CORVANE_VISIBLE double MeasureStarSigma(const CStlImage& image, const Run& run = {});

/// The noise from sample to sample [raw units], from the median difference of neighbours, so that neither stars nor a
/// sky that is uneven count; of several planes that of the noisiest.
CORVANE_VISIBLE double MeasureNoise(const CStlImage& image);

/// From where on the samples of each plane are saturated, as far as they show it; infinite where they do not. Throws
/// Cancelled.
std::vector<double> MeasureCeilings(const CStlImage& image, const Run& run);

/// Electrons per count: EGAIN of the header or 1, times NCOMBINE, since n electrons make up a count of a mean of n
/// frames.
double GainOf(const io::Header& header);

/// The read-out noise [electrons]: RDNOISE or READNOIS of the header or 0, times the root of NCOMBINE.
double ReadNoiseOf(const io::Header& header);

} // namespace corvane::catalogue
