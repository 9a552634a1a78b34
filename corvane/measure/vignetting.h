#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Corrects vignetting by a model of how brightness changes with the distance from a centre, instead of a flat field.
class CORVANE_API CImgFlat : public CStlImage {
public:
    CImgFlat() = default;
    /// A copy of the image to be changed.
    explicit CImgFlat(const CStlImage& source) : CStlImage(source) {}

    /// Writes the samples of `source` inside the rectangle, times base / (k * r^2 + base), into this image; the others
    /// stay as they are. Null means the whole image.
    ///
    /// r is the distance of the pixel from `centre` [pixels], which may lie anywhere. The factor is 1 at the centre; it
    /// grows outwards, and so lifts dark corners, when k / base is below 0. Where k * r^2 + base is 0 or less, beyond
    /// the reach of such a model, a sample becomes 255.0 on the raw scale. `k` and `base` have no limits; NaN gives
    /// NaN. Every plane gets the same factors. Blanks are samples like others; positions outside `source` take its
    /// edge. Reports "Applying vignetting correction..."; ESC is ignored.
    void Do(CStlImage* source, CPoint centre, double k, double base, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& source, CPoint centre, double k, double base, const CRect* rect, const corvane::Run& run);
};
