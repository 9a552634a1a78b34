#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Turns an image into its negative within the display levels: a sample s becomes 2 * level min + range - s.
class CORVANE_API CImgInvert : public CStlImage {
public:
    CImgInvert() = default;
    /// A copy of the image to be inverted.
    explicit CImgInvert(const CStlImage& source) : CStlImage(source) {}

    /// Inverts the samples of `source` inside the rectangle into this image; the others stay as they are.
    /// Null means the whole image. Each plane goes through its own levels. Reports "Inverting..."; ESC is ignored.
    void Do(CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& source, const CRect* rect, const corvane::Run& run);
};
