#pragma once

#include "corvane/core/stl_image.h"

/// Measures the samples of a region of the image: maximum, minimum, mean and median of each plane. Changes nothing.
class CORVANE_API CImgPixelInfo : public CStlImage {
public:
    CImgPixelInfo() = default;
    /// A copy of the image to be measured.
    explicit CImgPixelInfo(const CStlImage& source) : CStlImage(source) {}

    /// Fills three entries of each output, one for each plane; those of planes that the image lacks become 0. `medians`
    /// may be null.
    ///
    /// A rectangle of one pixel gives its sample in every output, be it blank or not. Of others blanks are left out,
    /// and the median is the element count / 2 of the samples in order. Positions outside the image count as the edge
    /// pixel next to them, each of them once more; a rectangle may reach as far as it likes.
    ///
    /// Maximum and minimum begin with the sample at the top left corner, even if it is blank, and replace it by what is
    /// greater or smaller. NaN makes the mean NaN, never replaces an extreme, and is greater than any number in the
    /// median. Where no sample counts, in a plane of blanks or in an empty or turned over rectangle, mean and median
    /// are NaN. The median is found by counting, without a copy of the samples.
    void Calc(CRect rect, double* maxima, double* minima, double* means, double* medians);
    /// The same of the square of size / 2 (towards zero) pixels on each side of a point, of 1 pixel for sizes -1 to 1;
    /// of a negative size it is turned over. Edges that no int holds are moved to the nearest that it does.
    void Calc(CPoint point, int size, double* maxima, double* minima, double* means, double* medians);
};
