#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/restore/restore_progress.h"

/// Restoration of blurred images by the iteration of Richardson and Lucy, in place, for a Gaussian point-spread
/// function and photon and read-out noise; see `corvane::RestoreLucy` for the method.
class CORVANE_API CImgLucy : public CStlImage {
public:
    CImgLucy() = default;
    /// A copy of the image to be restored.
    explicit CImgLucy(const CStlImage& source) : CStlImage(source) {}

    /// Restores the samples of this image inside the rectangle; null, or one of the image's size, means the whole
    /// image.
    ///
    /// `sigma` of the point-spread function [pixels, above 0; from about 9.9 on its first sample outgrows its centre],
    /// `gain` [electrons per raw unit, above 0], `readNoise` [electrons, 0 or more]. Ends when the reduced chi-square
    /// falls to 1, or after so many iterations; below 1, the result is the mean. Samples that lie more than 5 sigmas of
    /// the read-out noise below 0 take no part; when none does, the result is 0, without iterations 1. Work goes on a
    /// grid of 64 x 64 at least, and a region meets itself across its edges. A rectangle beyond the image is filled
    /// with the samples of the edge. Blanks are not known; a NaN or an infinity spreads over the whole region.
    ///
    /// Reports each plane's iterations, and stops for ESC: then, or when memory is short, a message box says so, the
    /// image stays as it was, and the result is 0, otherwise 1. A region that does not fit the memory budget gives 0
    /// without a message.
    int Do(double sigma, double gain, double readNoise, int iterations, CRect* rect, int showProgress);

    /// The same, as a part of a run, which hears of the iterations: shows no message box, and returns how it ended.
    /// Throws CMemoryException for a region that does not fit the memory budget.
    corvane::Restored Do(double sigma, double gain, double readNoise, int iterations, const CRect* rect,
                         const corvane::Run& run);

private:
    static float* MakeGauss(double sigma, int width, int height);
};
