#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Shifts an image round in a circle: what leaves it on one side comes in on the other.
class CORVANE_API CImgScroll : public CStlImage {
public:
    CImgScroll() = default;
    /// A copy of the image to be shifted.
    explicit CImgScroll(const CStlImage& source) : CStlImage(source) {}

    /// Writes the samples of `source`, dx columns further right and dy rows further down, into this image. Any shift is
    /// allowed; samples do not change.
    ///
    /// The reference points are unset. The world coordinates follow the larger part of the picture on either axis: a
    /// shift by more than half a side counts as one the other way. A source of another size repeats its edge, and
    /// missing planes its last one. It must be another image. Reports "Scrolling image..."; ESC is ignored.
    void Do(int dx, int dy, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    void Do(int dx, int dy, const CStlImage& source, const corvane::Run& run);
};
