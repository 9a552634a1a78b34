#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Turns an image: by any angle, by a quarter turn, by a half turn.
///
/// Every member turns the whole image and all planes and unsets the standard points. `source` must be another image,
/// usually the one that this is a copy of; its edge is repeated where it is smaller than needed, its last plane where
/// it has fewer. Directions are those of a screen with row 0 at the top. All report "Rotating..."; ESC is ignored.
class CORVANE_API CImgRotate : public CStlImage {
public:
    CImgRotate() = default;
    /// A copy of the image to be turned.
    explicit CImgRotate(const CStlImage& source) : CStlImage(source) {}

    /// Turns `source` by `angle` [degrees, positive clockwise; the factor to radians takes pi as 3.141592654] about
    /// (width / 2, height / 2), whole numbers.
    ///
    /// Bilinear between samples, also where one of them is blank; NaN spreads to the samples that read it. Right of the
    /// last column lies, as in storage, the first sample of the next row. What comes from outside becomes
    /// background[plane] [raw units; null means 0]. Without `expand` the size stays and corners are cut off; with it
    /// the canvas takes the turned corners in, rounded up, and reports "Changing canvas size..." first.
    ///
    /// The standard centre becomes that of the size before. The world coordinates are turned about it as if reference
    /// pixels were counted from 0: since they count from 1, they end up as far off as the point (1, 1) moves when it is
    /// turned about (0, 0). An angle of 0 returns at once, with nothing changed; 360 is calculated like any other.
    /// NaN and infinite angles leave nothing but background, and cannot expand.
    ///
    /// Returns 1, or 0 when the canvas could not be enlarged: then only the reference points have changed.
    int Do(double angle, double* background, CStlImage* source, int expand, int showProgress);
    /// The same, as a part of a run.
    int Do(double angle, const double* background, const CStlImage& source, int expand, const corvane::Run& run);

    /// A quarter turn of `source`, anticlockwise for direction 0, otherwise clockwise; the size becomes height x width
    /// and the display levels those of the source. Samples do not change.
    ///
    /// The world coordinates are turned by +90 degrees for both directions, about the whole part of the source's
    /// middle. Returns 1, or 0 when the canvas could not be made: then only the reference points have changed.
    int Do90(int direction, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    int Do90(int direction, const CStlImage& source, const corvane::Run& run);

    /// A half turn of `source`. Samples do not change. The world coordinates are turned by 180 degrees about the whole
    /// part of the source's middle and, unless the image is square, shifted by half the difference of its sides.
    void Do180(CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    void Do180(const CStlImage& source, const corvane::Run& run);
};
