#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Finds where a small reference image lies in this image, by the least mean squared difference after matching the
/// mean brightness of the two.
///
/// Samples are not changed. Blanks of this image are left out, and samples of the reference that equal its blank value;
/// a reference that alone uses blanks is tested against this image's blank value.
class CORVANE_API CImgMatching : public CStlImage {
public:
    CImgMatching() = default;
    /// A copy of the image to be searched.
    explicit CImgMatching(const CStlImage& source) : CStlImage(source) {}

    /// Searches offsets of the reference's top-left corner within searchRange / 2 pixels of (*x, *y) on both axes:
    /// every second whole offset, then the eight around the best, then, with subPixel, by 0.3 and 0.1 pixel.
    /// Returns 1 and the best offset in *x and *y, or 0 with both untouched when no offset gave a score.
    /// Reports "Processing object matching..." and cannot be cancelled.
    int Do(CStlImage* reference, double* x, double* y, int searchRange, int subPixel, int showProgress);
    /// The same, as a part of a run.
    int Do(const CStlImage& reference, double* x, double* y, int searchRange, int subPixel,
           const corvane::Run& run) const;

    /// Mean squared difference s - r * gains[plane] with the reference's corner at a whole offset;
    /// 3.402823466e38 when the two do not overlap.
    double CalcValue(const CStlImage* reference, int x, int y, const double* gains) const;
    /// The same at a fractional offset, the reference read between its samples. The overlap goes from the offset
    /// rounded up to just before the offset plus the reference's size, rounded down.
    double CalcValue(const CStlImage* reference, double x, double y, const double* gains) const;
};
