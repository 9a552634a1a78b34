#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Posterises: leaves each plane a few grey steps between its display levels, which stay.
class CORVANE_API CImgReduceTone : public CStlImage {
public:
    CImgReduceTone() = default;
    /// A copy of the image to be changed.
    explicit CImgReduceTone(const CStlImage& source) : CStlImage(source) {}

    /// Maps the samples of `source` inside the rectangle to grey steps in this image; the others stay as they are. Null
    /// means the whole image.
    ///
    /// `levels` [1..256, others count as the nearest of these] is the number of steps. They lie at the display values
    /// k * 255 / levels for k = 0 .. levels - 1, so that 1 makes every sample black and none becomes white. Display
    /// values are by the levels of this image's own planes; those below 0, and NaN, count as 0, those above 255 as 255.
    /// Blanks are samples like others. Reports "Compressing grayscale..."; ESC is ignored.
    void Do(int levels, CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(int levels, const CStlImage& source, const CRect* rect, const corvane::Run& run);
};
