#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/restore/restore_progress.h"

/// Restoration of blurred images by maximum entropy, in place, for a Gaussian point-spread function and even noise; see
/// `corvane::RestoreByEntropy` for the method.
class CORVANE_API CImgMem : public CStlImage {
public:
    CImgMem() = default;
    /// A copy of the image to be restored.
    explicit CImgMem(const CStlImage& source) : CStlImage(source) {}

    /// Restores the samples of this image inside the rectangle; null, or one of the image's size, means the whole
    /// image.
    ///
    /// `sigma` of the point-spread function [pixels, above 0], `noiseSigma` of the noise [raw units, above 0]. Begins
    /// with an even image, of the mean or, where that is not above 0, of `noiseSigma`, which is the result when it
    /// agrees with the samples already. Ends when chi-square is one for each sample to within a hundredth, or after so
    /// many iterations; below 1, at once. The result is above 0 everywhere. The function is sampled half a pixel off
    /// its centre, so the result is displaced by half a pixel to the left and upwards. A rectangle beyond the image is
    /// filled with the samples of the edge. Blanks are not known. A plane with a NaN or an infinity, or a noise that is
    /// not above 0, leaves the samples as they are.
    ///
    /// Reports each plane's iterations, and stops for ESC: then, or when memory is short, a message box says so, the
    /// image stays as it was, and the result is 0, otherwise 1. A region that does not fit the memory budget gives 0
    /// without a message.
    int Do(double sigma, double noiseSigma, int iterations, CRect* rect, int showProgress);

    /// The same, as a part of a run, which hears of the iterations: shows no message box, and returns how it ended.
    /// With `isOnGrid` a function of 64 x 64 has its centre on a sample, and nothing is displaced. Throws
    /// CMemoryException for a region that does not fit the memory budget.
    corvane::Restored Do(double sigma, double noiseSigma, int iterations, const CRect* rect, bool isOnGrid,
                         const corvane::Run& run);

private:
    static float* MakeGauss(double sigma, int width, int height);
};
