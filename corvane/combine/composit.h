#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// How `CImgComposit` combines a base value a with an overlay value b.
enum CompositeMode : int {
    kCompositeSum = 0,           ///< a + b
    kCompositeMean = 1,          ///< (a + b) / 2
    kCompositeBlend = 2,         ///< (1 - ratio) * a + ratio * b
    kCompositeDifference = 3,    ///< a - b
    kCompositeProduct = 4,       ///< a * b; in display space a * b / 255 with b within 0..255
    kCompositeQuotient = 5,      ///< a / b
    kCompositeAbsDifference = 6, ///< |a - b|
    kCompositeMaximum = 7,       ///< the larger
    kCompositeMinimum = 8,       ///< the smaller
    kCompositeDesaturate = 9,    ///< b * ratio where a is saturated
};

} // namespace corvane

/// Combines a base image with an overlay that is aligned onto it and read between its samples.
///
/// The overlay is shifted by (dx, dy) pixels, to the right and down, and turned by `angle` degrees, clockwise on
/// screen, about its standard centre, which the caller sets. It may have any size. A result of one plane takes the
/// brightness 0.299 R + 0.587 G + 0.114 B of a colour overlay and the first plane of a colour base; a colour result
/// takes the plane of a monochrome image three times.
///
/// Values are combined as they are stored (raw), or on the display scale 0 to 255 by the levels of the image that each
/// comes from and stored by the result's own levels, without clamping. Modes outside of 0..9 give the base by way of
/// the display scale.
///
/// Blanks. The result uses blanks when base or overlay does, with the base's blank value or else the overlay's; when
/// neither does and dx, dy or angle is not 0, with -2147483648, -32768 or 0 by the base's original bits per pixel. A
/// pixel is blank where the base is, or the overlay; where neither uses blanks, outside of the overlay. Of a colour
/// pixel all three samples must be. It gets the result's blank value, in display space the level min. What is kept of
/// old: the overlay is tested on the scale on which it is combined, against its own blank value; outside of it stands,
/// where it uses blanks, the result's blank value; where the base alone uses blanks, 0 (display space: 255 for product
/// and quotient, so that they leave the base unchanged).
///
/// NaN stays NaN, but for maximum and minimum, which give the base where either is NaN.
class CORVANE_API CImgComposit : public CStlImage {
public:
    CImgComposit() = default;
    /// A copy of the base.
    explicit CImgComposit(const CStlImage& base) : CStlImage(base) {}

    /// Writes the composite of base and overlay inside the rectangle; other samples stay, and so do those for which a
    /// base smaller than this image has no column. Rows and planes that the base lacks repeat its last ones.
    ///
    /// - mode [0..9]: see corvane::CompositeMode. Quotient: where b is 0 the result is its blank value, in display
    ///   space carried through the levels; a grey composite in display space divides by b / 255 with b within
    ///   0.001..255, a colour one by b itself.
    /// - ratio: of blend [0..1] and desaturate. displaySpace: non-zero for display space.
    /// - clampNegative: non-zero makes negative differences of colour composites 0; grey ones keep theirs.
    /// - fraction, radius: see `Abr`.
    /// - textId: the text of the progress; -1 is "Combining files...". One step a row; ESC is ignored.
    void Do(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int mode, double ratio,
            int displaySpace, int clampNegative, double fraction, int radius, CRect* rect, int showProgress,
            int textId);
    /// The same, as a part of a run.
    void Do(const CStlImage& base, const CStlImage& overlay, double dx, double dy, double angle, int mode, double ratio,
            int displaySpace, int clampNegative, double fraction, int radius, const CRect* rect,
            const corvane::Run& run, int textId = -1);
    /// The whole image with ratio 0.5, no clamping, fraction 0.95, radius 0 and no progress.
    void Do(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int mode, int displaySpace);

    /// Mode 9, which joins a long exposure whose bright parts saturate with a shorter one: takes the smaller of a and
    /// q = b * ratio, where `ratio` is the long exposure over the short one.
    ///
    /// With radius 1 or 2 (more is 2, less than 0 is 0) the largest a and b within so many pixels say whether a place
    /// is saturated: at least `fraction` of 255 in display space, of `GetMaxPixel` of plane 0 in raw space, so call
    /// `CalcMinMax` of both images before. Near a saturated base the largest a takes the place of a, near a saturated
    /// overlay the largest b that of b; near both but not in both, of a and q the one that is closer to the pixels
    /// above left, above and to the left, already written: those wait for the rows before them. At the overlay's
    /// border, one pixel wide, and outside of it the result is a. There are no blanks.
    ///
    /// Kept of old: the cosine of the turn is never negative, so 120 degrees turn as 60; in display space every plane
    /// of a colour image goes through plane 0's levels, but for the overlay and the neighbours in the base; progress
    /// counts the rows of one plane and is given those of all. `mode` and `clampNegative` do not matter.
    void Abr(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int mode, double ratio,
             int displaySpace, int clampNegative, double fraction, int radius, CRect* rect, int showProgress,
             int textId);

private:
    void Desaturate(const CStlImage& base, const CStlImage& overlay, double dx, double dy, double angle, double ratio,
                    int displaySpace, double fraction, int radius, const CRect* rect, const corvane::Run& run,
                    int textId);
    static double GetOutsideValue(int mode);
};
