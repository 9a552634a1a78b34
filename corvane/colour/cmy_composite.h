#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Makes a colour image of three frames that were exposed through a cyan, a magenta and a yellow filter.
///
/// With raw samples c, m and y the result is R = y + m - c, G = c + y - m, B = c + m - y: twice the usual values, kept
/// of old. Frames are placed as `CImgRgbCmpst` does. Blanks are samples like others; a NaN makes all three samples NaN.
class CORVANE_API CImgCmyComposit : public CStlImage {
public:
    CImgCmyComposit() = default;
    /// A copy of the image whose rectangle is to be written, usually of three planes.
    explicit CImgCmyComposit(const CStlImage& source) : CStlImage(source) {}

    /// Writes planes 0, 1 and 2, as far as this image has them, inside the rectangle; null means the whole image.
    ///
    /// A colour frame gives its plane 0. The ends of each plane's display level are the means of those of the two
    /// frames that enter it with a plus.
    /// - outside: the raw value that stands for c, m or y where that frame is not.
    /// Reports "Combining CMY images..."; ESC is ignored.
    void Do(CStlImage* c, double dxC, double dyC, double angleC, CStlImage* m, double dxM, double dyM, double angleM,
            CStlImage* y, double dxY, double dyY, double angleY, CRect* rect, int outside, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& c, double dxC, double dyC, double angleC, const CStlImage& m, double dxM, double dyM,
            double angleM, const CStlImage& y, double dxY, double dyY, double angleY, const CRect* rect, int outside,
            const corvane::Run& run);
};
