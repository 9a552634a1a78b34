#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// Which image of a mosaic shows where both cover a pixel.
enum MosaicMode : int {
    kMosaicSecondOver = 0, ///< the second
    kMosaicKey = 1,        ///< the second, but for pixels that are close to the key, where the first shows through
    kMosaicLighter = 2,    ///< the lighter; equal ones: the first, in colour the second
    kMosaicDarker = 3,     ///< the darker; equal ones: the first, in colour the second
    kMosaicFirstOver = 4,  ///< the first; so do all other modes
};

} // namespace corvane

/// Joins two images on a canvas, which is this image, sized by the caller.
///
/// The first image lies at a whole-pixel offset. The second lies at that offset plus a shift of its own, turned about
/// its standard centre, which the caller sets, and is read between its samples. A canvas of one plane takes the
/// brightness 0.299 R + 0.587 G + 0.114 B of a colour image, a colour canvas the plane of a monochrome one three times.
/// Blanks are samples like others. A NaN in the second image shows in modes 0 and 1; in modes 2 and 3 the first image
/// shows in its place.
class CORVANE_API CImgMosic : public CStlImage {
public:
    CImgMosic() = default;
    /// A copy of the canvas.
    explicit CImgMosic(const CStlImage& canvas) : CStlImage(canvas) {}

    /// Fills the rectangle of the canvas; its other samples stay. Null is the whole canvas.
    ///
    /// - ox, oy: where the first image's corner lies [pixels].
    /// - dx, dy: how far the second lies from the first [pixels]; angle [degrees, clockwise on screen].
    /// - mode: see corvane::MosaicMode. Lighter and darker compare the brightness of colours.
    /// - key: one value for each plane [raw units]; null for 0, in display space 0 of the display scale. A pixel is
    ///   close to it below 1/256 of plane 0's level range, in display space below 1; of a colour pixel the sum of the
    ///   three differences counts.
    /// - outside: its first value stands for samples outside of an image [display scale]; in raw space and with null it
    ///   is 0. Pixels that neither image covers get it.
    /// - displaySpace: non-zero works on the display scale 0 to 255 by the levels of the image that is read, and stores
    ///   by the levels of the canvas, each plane by its own.
    /// - average: non-zero makes every pixel the mean of both values, whatever the mode, the outside value included.
    /// Reports "Creating mosaic..."; ESC is ignored.
    void Do(CStlImage* first, int ox, int oy, CStlImage* second, double dx, double dy, double angle, int mode,
            float* key, float* outside, int displaySpace, int average, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const CStlImage& first, int ox, int oy, const CStlImage& second, double dx, double dy, double angle,
            int mode, const float* key, const float* outside, int displaySpace, int average, const CRect* rect,
            const corvane::Run& run);
};
