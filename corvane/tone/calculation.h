#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Adds, subtracts, multiplies or divides by a constant, in raw units.
class CORVANE_API CImgCalculation : public CStlImage {
public:
    CImgCalculation() = default;
    /// A copy of the image to be changed.
    explicit CImgCalculation(const CStlImage& source) : CStlImage(source) {}

    /// Calculates the samples of `source` inside the rectangle into this image; the others stay as they are. Null means
    /// the whole image.
    ///
    /// `mode` is 0 for sample + value, 1 for sample - value (with `clipNegative` not 0: 0 where that is below 0), 2 for
    /// sample * value, 3 for sample / value; others copy the samples. Dividing by 0 gives this image's blank value,
    /// whether or not it is in use. Samples that are blank by this image are copied in every mode. NaN stays NaN.
    /// Reports "Calculating..."; ESC is ignored.
    void Do(double value, int mode, int clipNegative, CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(double value, int mode, int clipNegative, const CStlImage& source, const CRect* rect,
            const corvane::Run& run);
};
