#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Enlarges an image by whole factors: every sample becomes a block of equal ones.
class CORVANE_API CImgExpansion : public CStlImage {
public:
    CImgExpansion() = default;
    /// A copy of the image to be enlarged.
    explicit CImgExpansion(const CStlImage& source) : CStlImage(source) {}

    /// Writes each sample of `source` fx times side by side and fy times one below the other. Samples do not change.
    ///
    /// The reference points are unset; the world coordinates follow. `source` must be another image, usually the one
    /// that this is a copy of: it is this image's size that is multiplied, a smaller source repeats its edge, and
    /// missing planes its last one. Reports "Changing canvas size..." and "Expanding image..."; ESC is ignored. Returns
    /// 1, or 0 when a factor is below 1 or there is no room: then only the reference points have changed.
    int Do(int fx, int fy, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    int Do(int fx, int fy, const CStlImage& source, const corvane::Run& run);
};
