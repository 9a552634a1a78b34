#pragma once

#include <vector>

#include "corvane/core/diagnostic.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/restore/region.h"
#include "corvane/restore/restore_progress.h"

namespace corvane {

/// What a plane is restored with.
struct LucyJob {
    int width = 0;  ///< of the plane [pixels]
    int height = 0; ///< [pixels]
    const float* psf = nullptr;
    int psfWidth = 0;
    int psfHeight = 0;
    bool isPsfCentred = false;      ///< its origin is the sample (psfWidth / 2, psfHeight / 2), not the largest one
    const float* initial = nullptr; ///< first estimate, of the plane's size; null: the weighted mean everywhere
    int iterations = 0;             ///< at most; below 1 the first estimate is the result
    double gain = 1.0;              ///< electrons per raw unit
    double readNoise = 0.0;         ///< standard deviation [electrons]
    double target = 1.0;            ///< reduced chi-square at which it ends
    double threshold = 5.0;         ///< so many sigmas below 0 a sample is left out; 0 or less: none is
    double damping = 0.0;           ///< how much the image's total variation counts [0..0.2]; 0: not at all
    double skyNoise = 0.0; ///< standard deviation of the sky [raw units]; above 0 stars are protected by `StarFloor`
    const std::vector<char>* isSaturated = nullptr; ///< of each sample of the plane, 0 for no; null: none is
    LucyMode mode = LucyMode::kTurbo;
};

/// Restores a plane by the iteration of Richardson and Lucy for photon and read-out noise, in place.
///
/// W. H. Richardson, J. Opt. Soc. Am. 62, 55 (1972); L. B. Lucy, Astron. J. 79, 745 (1974); read-out noise as in
/// D. L. Snyder, A. M. Hammoud, R. L. White, J. Opt. Soc. Am. A 10, 1014 (1993). Steps are lengthened by a line search
/// along the likelihood, after R. N. Hook, L. B. Lucy, in The Restoration of HST Images and Spectra II (1994). From the
/// second iteration on the direction is made conjugate to the one before; see `DirectionShare`.
///
/// Damping is that of N. Dey, L. Blanc-Feraud, C. Zimmer, P. Roux, Z. Kam, J.-C. Olivo-Marin, J. Zerubia, Microscopy
/// Research and Technique 69, 260 (2006): the correction is divided by 1 - damping * div(grad u / |grad u|). Its steps
/// are plain ones whatever the mode. With a floor the estimate is what rises above it, so that positivity holds there;
/// the blurred floor is part of the model. Saturated samples take no part, as R. L. White does with them in The
/// Restoration of HST Images and Spectra II (1994): what they hide is told by the wings about them. They stay as they
/// are, since wings tell little of what lies deep in a saturated core.
///
/// The plane, of 1 x 1 or more, is restored on a grid that holds the function too. On cancellation, or without memory,
/// it stays as it is; a chi-square that is not a number ends the work with what there is. `plane` is its number, from 1
/// on, or 0 for the only one. The run hears of a `LucyStart` and of each `LucyIteration`.
CORVANE_VISIBLE Restored RestoreLucy(float* data, const LucyJob& job, const Run& run, int plane);

/// What that takes beside the plane.
CORVANE_VISIBLE RestorationNeeds NeedsOf(const LucyJob& job);

/// Restores the planes of an image inside a rectangle, in place; null means the whole image. The size of the job is
/// that of the rectangle. Samples from a plane's ceiling on are saturated, in all planes, so that their colours stay;
/// without ceilings, none is. Cancelled, it leaves the image as it is. Throws CMemoryException when it does not fit the
/// memory budget.
CORVANE_VISIBLE Restored RestoreLucy(CStlImage& image, const CRect* rect, LucyJob job, const Run& run,
                                     const std::vector<double>& ceilings = {});

} // namespace corvane
