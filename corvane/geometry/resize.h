#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Changes the canvas of an image without resampling: the picture is kept, cut or framed.
class CORVANE_API CImgResize : public CStlImage {
public:
    CImgResize() = default;
    /// A copy of the image whose canvas is to change.
    explicit CImgResize(const CStlImage& source) : CStlImage(source) {}

    /// Puts the picture of `source` onto a canvas of the new size. `anchor` says where: 0 top left, 1 top, 2 top right,
    /// 3 left, 4 centre, 5 right, 6 bottom left, 7 bottom, 8 bottom right; any other is top left. Halves of a pixel are
    /// cut towards zero. Samples do not change.
    ///
    /// The rest becomes background[plane] [display value, 0..255; null means 0], one for each plane, all of them turned
    /// into raw units with plane 0's levels. The reference points are unset. The world coordinates are shifted by the
    /// number of columns and rows cut off on the left and at the top, to the right and down, and not at all where the
    /// canvas grows. `source` must be another image, usually the one that this is a copy of.
    ///
    /// Reports "Changing canvas size..." once for the new canvas, then for its rows and those copied. ESC is ignored.
    /// Returns 1, or 0 when a size is below 1 or there is no room: then only the reference points have changed.
    int Do(int newWidth, int newHeight, int anchor, float* background, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    int Do(int newWidth, int newHeight, int anchor, const float* background, const CStlImage& source,
           const corvane::Run& run);
};
