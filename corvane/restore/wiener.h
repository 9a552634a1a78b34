#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// The factor by which `CImgWiener::Do` makes an image of a size fainter, noise 0: the sum of its blur.
CORVANE_API double WienerGain(double sigma, int width, int height);

/// Bytes that `CImgWiener::Do` takes at most, for a region of an image that has so many planes; 0 for the whole image
/// and a run that cannot be cancelled, when it works in place.
CORVANE_API double WienerBytes(int width, int height, int planes);

} // namespace corvane

/// Deblurring by Wiener's filter, in place, for a Gaussian point-spread function: one pass, without iteration.
///
/// N. Wiener, Extrapolation, Interpolation, and Smoothing of Stationary Time Series (1949), with noise of constant
/// power.
class CORVANE_API CImgWiener : public CStlImage {
public:
    CImgWiener() = default;
    /// A copy of the image to be deblurred.
    explicit CImgWiener(const CStlImage& source) : CStlImage(source) {}

    /// Deblurs the samples of this image inside the rectangle; null, or one of the image's size, means the whole image.
    ///
    /// `sigma` times 0.7071 is the width of the point-spread function [pixels, above 0]; `noise` the power of the noise
    /// over the greatest power of the blur [0 or more; 0 is the plain inverse, which lets noise grow without bound].
    /// Works on what the display levels show, beyond which values go on; the levels stay. The function is not brought
    /// to a sum of 1 but peaks at 159.155, and the result is fainter by its sum, about 500 sigma sigma. Sides of the
    /// grid are powers of two, filled with the image in the mirror. A NaN or an infinity spreads over the whole region;
    /// a rectangle that begins left of or above the image is moved to it, and what it has beyond the image counts as 0.
    ///
    /// Reports its steps; ESC is ignored. 1 on success; 0, with the image unchanged, when there is no room.
    int Do(double sigma, double noise, CRect* rect, int showProgress);
    /// The same, as a part of a run. Throws CMemoryException when there is no room. Cancelled, it leaves the image as
    /// it is.
    void Do(double sigma, double noise, const CRect* rect, const corvane::Run& run);
};
