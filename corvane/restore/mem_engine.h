#pragma once

#include "corvane/core/diagnostic.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/restore/restore_progress.h"

namespace corvane {

/// What a plane is restored with.
struct MemJob {
    int width = 0;  ///< of the plane [pixels]
    int height = 0; ///< [pixels]
    const float* psf = nullptr;
    int psfWidth = 0;
    int psfHeight = 0;
    bool isPsfCentred = false; ///< its origin is the sample (psfWidth / 2, psfHeight / 2), not the largest one
    double variance = 1.0;     ///< of the noise [raw units squared]
    int iterations = 0;        ///< at most
};

/// @name What the engine returns, a digit each
/// @{
inline constexpr int kMemDone = 0;
inline constexpr int kMemNothingToFit = 5; ///< the variance or the data are no numbers to work with: they stay
inline constexpr int kMemNotReached = 6;   ///< the iterations ran out before the target was met
inline constexpr int kMemNoGrid = 7;       ///< no memory
inline constexpr int kMemCancelled = 8;
/// @}

/// What a status says, digit by digit from the last one on: 8 is cancellation, 1 to 4 and 7 are want of memory. The
/// others are no failure and are passed over.
CORVANE_VISIBLE Restored EndOfStatus(int status);

/// Restores a plane by maximum entropy, in place: of all images above 0 that, blurred, agree with the data to within
/// the noise, the one with the greatest entropy against an even image: of the data's mean or, where that is not above
/// 0, of the noise's standard deviation. It starts from that image, and stays there when it agrees already.
///
/// The entropy is the sum of f - m - f ln(f / m); agreement is a chi-square of one for each datum, within a hundredth.
/// Directions, the quadratic model in the space they span, the multiplier and the limit of a step are those of
/// J. Skilling, R. K. Bryan, Mon. Not. R. Astron. Soc. 211, 111 (1984); along the direction so found a bounded line
/// search follows, so that the image stays above 0 and the objective rises. The grid is larger than the plane by half
/// the point-spread function, so that light from beyond the edges has a place and opposite edges do not meet.
///
/// `data` is 1 x 1 or larger and stays as it is unless the status is `kMemDone` or `kMemNotReached`. `plane` is its
/// number, from 1 on, or 0 for the only one. The run hears of a `MemStart` and of each `MemIteration`.
CORVANE_VISIBLE int RestoreByEntropy(float* data, const MemJob& job, const Run& run, int plane);

/// Restores the planes of an image inside a rectangle, in place; null means the whole image. The size of the job is
/// that of the rectangle. Cancelled, it leaves the image as it is. Throws CMemoryException when it does not fit the
/// memory budget.
CORVANE_VISIBLE Restored RestoreByEntropy(CStlImage& image, const CRect* rect, MemJob job, const Run& run);

} // namespace corvane
