#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Keeps a rectangle of an image.
class CORVANE_API CImgCrop : public CStlImage {
public:
    CImgCrop() = default;
    /// A copy of the image to be cut.
    explicit CImgCrop(const CStlImage& source) : CStlImage(source) {}

    /// Takes the samples of `source` inside the rectangle, which should lie within it: rows outside repeat the edge; a
    /// left edge outside is moved inside; columns that are then missing on the right repeat the edge, too. Samples do
    /// not change. The reference points are unset, the world coordinates are shifted by (-left, -top). `source` must be
    /// another image, usually the one that this is a copy of; a plane that it lacks repeats its last one.
    ///
    /// Reports "Changing canvas size...", then an empty text and one step a row of twice as many, so that the bar ends
    /// half full. ESC is ignored. Returns 1, or 0 when the rectangle is empty or there is no room: then only the
    /// reference points have changed.
    int Do(CRect rect, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    int Do(CRect rect, const CStlImage& source, const corvane::Run& run);
};
