#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Shows intensities as colours of a map.
///
/// Maps run from display value 0 to 255 through control colours at equal distances: 0 blue, cyan, green, yellow, red;
/// 1 black, blue, cyan, green, yellow, red, white; 2 black, dark blue, blue, light blue, white; 3 black, red, yellow,
/// white, smoothly. Other numbers give grey. Colours blend from one control colour to the next, but in map 1 they come
/// only two thirds of the way and then jump: its look has always been stepped.
class CORVANE_API CImgFalseColor : public CStlImage {
public:
    CImgFalseColor() = default;
    /// A copy of an image, which must have three planes when `Do` is called: see `ToColor`.
    explicit CImgFalseColor(const CStlImage& source) : CStlImage(source) {}

    /// Colours the pixels of this image inside the rectangle by the intensities of `source`; the others stay as they
    /// are. Null means the whole image. Nothing happens when this image has fewer than three planes.
    ///
    /// `low` and `high` [raw units of the source] become display values 0 and 255 of the map, through the levels of the
    /// source's plane 0; intensities beyond them take the colour of the nearer. The intensity of a colour source is the
    /// luminance of its samples above their level mins, in raw units: its level range does not count. With low equal to
    /// high every pixel takes an end's colour. `cycles` [above 1 to repeat] runs the map so many times, see
    /// `GetFalseColor`. Colours go through this image's levels. Blanks are samples like others; NaN counts as 0.
    /// Of a smaller source the last row repeats; pixels to the right of it stay. Reports "Applying false color...", one
    /// step a row; ESC is ignored.
    void Do(double low, double high, int map, int cycles, CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(double low, double high, int map, int cycles, const CStlImage& source, const CRect* rect,
            const corvane::Run& run);

    /// The colour of a display value [0..255, others count as the nearest, NaN as 0]; components 0 to 255. With
    /// `cycles` above 1 it is the colour of cycles * value modulo 256. The pointers must not be null.
    void GetFalseColor(float value, int map, int cycles, float* red, float* green, float* blue) const;
};
