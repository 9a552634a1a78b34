#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Raises or lowers the saturation of colours in CIE L*a*b*; lightness and display levels stay.
class CORVANE_API CImgLabColorEnhance : public CStlImage {
public:
    CImgLabColorEnhance() = default;
    /// A copy of the image to be changed, with its display levels.
    explicit CImgLabColorEnhance(const CStlImage& source) : CStlImage(source) {}

    /// Writes the colours of `lab`, planes L, a and b as `CStlImage::MakeLabPlane` makes them, with a and b multiplied
    /// by gains, into the first three planes of this image inside the rectangle, each through its display levels; the
    /// other samples stay as they are. Null means the whole image.
    ///
    /// The gains [no unit, any numbers] are for red (a >= 0), green (a < 0), yellow (b >= 0) and blue (b < 0). 1 gives
    /// the colour as it is, 0 grey, a negative gain the opposite hue. A channel that would be negative, outside the
    /// gamut, or NaN becomes the level min; nothing is clamped at white.
    ///
    /// Where `lab` is smaller its last column, row or plane is repeated; without samples it changes nothing. Reports
    /// "Enhancing Lab color..."; ESC is ignored.
    void Do(CStlImage* lab, double aPlus, double aMinus, double bPlus, double bMinus, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& lab, double aPlus, double aMinus, double bPlus, double bMinus, const CRect* rect,
            const corvane::Run& run);
    /// The same with one gain for a and one for b.
    void Do(CStlImage* lab, double aGain, double bGain, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& lab, double aGain, double bGain, const CRect* rect, const corvane::Run& run);
};
