#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Brightens or darkens each plane by an amount of its own; the display levels stay.
class CORVANE_API CImgColorBalance : public CStlImage {
public:
    CImgColorBalance() = default;
    /// A copy of the image to be changed.
    explicit CImgColorBalance(const CStlImage& source) : CStlImage(source) {}

    /// Adds to the display values of each plane of `source` inside the rectangle, into this image; the other samples
    /// stay as they are. Null means the whole image.
    ///
    /// The offsets [display units, 255 for the level range] of the red, green and blue plane may be any numbers; an
    /// image of one plane takes the first. The display scale is that of this image's plane 0 for every plane. Nothing
    /// is clamped; blanks are samples like others; NaN stays NaN, and with a level range of 0 all become NaN. Reports
    /// "Applying color balance..."; ESC is ignored.
    void Do(double offsetPlane0, double offsetPlane1, double offsetPlane2, CStlImage* source, CRect* rect,
            int showProgress);
    /// The same, as a part of a run.
    void Do(double offsetPlane0, double offsetPlane1, double offsetPlane2, const CStlImage& source, const CRect* rect,
            const corvane::Run& run);
};
