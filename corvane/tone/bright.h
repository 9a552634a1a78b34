#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Changes brightness and contrast of what the display levels show; the levels stay.
class CORVANE_API CImgBright : public CStlImage {
public:
    CImgBright() = default;
    /// A copy of the image to be changed.
    explicit CImgBright(const CStlImage& source) : CStlImage(source) {}

    /// Maps the samples of `source` inside the rectangle into this image; the others stay as they are. Null means the
    /// whole image. A display value s becomes s + (s - centre) * contrast / 256 + brightness.
    ///
    /// `brightness` and `centre` [display units, black 0 and white 255] and `contrast` [1/256] may be any numbers:
    /// contrast 256 doubles the distance from the centre, -256 leaves the centre alone. The display scale is that of
    /// this image's plane 0 for every plane. Nothing is clamped; blanks are samples like others; NaN stays NaN, and
    /// with a level range of 0 all become NaN. Reports "Processing brightness/contrast..."; ESC is ignored.
    void Do(double brightness, double contrast, double centre, CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(double brightness, double contrast, double centre, const CStlImage& source, const CRect* rect,
            const corvane::Run& run);
};
