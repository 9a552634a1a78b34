#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Mirrors an image top to bottom or left to right.
class CORVANE_API CImgFlip : public CStlImage {
public:
    CImgFlip() = default;
    /// A copy of the image to be mirrored.
    explicit CImgFlip(const CStlImage& source) : CStlImage(source) {}

    /// Writes the samples of `source`, mirrored, into this image: direction 0 exchanges top and bottom, 1 left and
    /// right. Samples, blanks and NaN among them, do not change; the world coordinates follow; the reference points
    /// stay as they are.
    ///
    /// Any other direction changes nothing: progress is opened, with the text of the horizontal flip, and closed.
    /// A source of another size repeats its edge, and missing planes its last one. It must be another image. Reports
    /// "Flipping image vertically..." or "Flipping image horizontally..."; ESC is ignored.
    void Do(int direction, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    void Do(int direction, const CStlImage& source, const corvane::Run& run);
};
