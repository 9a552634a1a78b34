#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Makes a colour image of three frames that were exposed through a red, a green and a blue filter.
///
/// Each frame has a shift (dx, dy) [pixels, right and down] and a turn [degrees, clockwise on screen] about its
/// standard centre, and is read between its samples; frames may have any size. Samples keep their raw values. Blanks
/// are samples like others, and a NaN reaches what is read next to it.
class CORVANE_API CImgRgbCmpst : public CStlImage {
public:
    CImgRgbCmpst() = default;
    /// A copy of the image whose rectangle is to be written, usually of three planes.
    explicit CImgRgbCmpst(const CStlImage& source) : CStlImage(source) {}

    /// Writes planes 0, 1 and 2, as far as this image has them, inside the rectangle; null means the whole image.
    ///
    /// Plane p takes the frame's plane p when that has three, else its plane 0, with the display level of that plane.
    /// - outside: the raw value where a frame is not.
    /// - planes: three flags, or null for all planes. When the first is 0, only the planes whose flag is not are
    ///   written; otherwise all three are, whatever the others say (kept of old). The levels are set in either case.
    /// Reports "Combining RGB files..."; ESC is ignored.
    void Do(CStlImage* r, double dxR, double dyR, double angleR, CStlImage* g, double dxG, double dyG, double angleG,
            CStlImage* b, double dxB, double dyB, double angleB, CRect* rect, int outside, int* const planes,
            int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& r, double dxR, double dyR, double angleR, const CStlImage& g, double dxG, double dyG,
            double angleG, const CStlImage& b, double dxB, double dyB, double angleB, const CRect* rect, int outside,
            const int* planes, const corvane::Run& run);
};
