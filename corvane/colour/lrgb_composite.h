#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Gives the colours of one image to the lightness of another, in CIE L*a*b*; see CColor.
///
/// Both are placed with a shift (dx, dy) [pixels, right and down] and a turn [degrees, clockwise on screen] about their
/// standard centres, and are read between their samples; the second has a scale besides: so many of its pixels go on
/// one pixel of this image. They may have any size. All planes of the result get the display level of the first image's
/// plane 0, by which values are stored; of this image those planes are written that it has.
class CORVANE_API CImgLrgbCmpst : public CStlImage {
public:
    CImgLrgbCmpst() = default;
    /// A copy of the image whose rectangle is to be written, usually of three planes.
    explicit CImgLrgbCmpst(const CStlImage& source) : CStlImage(source) {}

    /// Combines the display values of a luminance frame and a colour frame inside the rectangle; null means the whole
    /// image. A monochrome frame gives its plane three times; where a frame is not, it is black.
    ///
    /// Values on the display scale, each plane by its own levels, are cut to 0..5000; the pixel takes L of the first
    /// and a and b of the second. Colours beyond the primaries lose what is negative. A blank is a sample like others,
    /// and a NaN makes the pixel black. With `average` non-zero the result is the mean of both display values instead,
    /// not cut; there a NaN stays one. Reports "Combining LRGB images...", averages only to a run; ESC is ignored.
    void DoLrgb(CStlImage* lum, double dxL, double dyL, double angleL, CStlImage* rgb, double dxC, double dyC,
                double angleC, double scaleC, CRect* rect, int average, int showProgress);
    /// The same, as a part of a run.
    void DoLrgb(const CStlImage& lum, double dxL, double dyL, double angleL, const CStlImage& rgb, double dxC,
                double dyC, double angleC, double scaleC, const CRect* rect, int average, const corvane::Run& run);

    /// Combines an L image and an a/b image, as `MakeLPlane` and `MakeAbPlane` make them; where either is not, its
    /// values are 0. Reports "Combining LRGB images..."; ESC is ignored.
    void DoLab(CStlImage* lImage, double dxL, double dyL, double angleL, CStlImage* abImage, double dxC, double dyC,
               double angleC, double scaleC, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void DoLab(const CStlImage& lImage, double dxL, double dyL, double angleL, const CStlImage& abImage, double dxC,
               double dyC, double angleC, double scaleC, const CRect* rect, const corvane::Run& run);
};
