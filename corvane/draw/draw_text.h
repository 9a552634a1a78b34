#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/draw/pen.h"

/// Writes text into the samples of an image.
///
/// The font is built in: strokes of a pen with round ends, for the printable characters of ASCII. Other characters, in
/// UTF-8, are drawn as boxes. Letters are of any height and thickness.
class CORVANE_API CImgDrawText : public CStlImage {
public:
    CImgDrawText() = default;
    /// A copy of the image to be written on.
    explicit CImgDrawText(const CStlImage& source) : CStlImage(source) {}

    /// Writes the samples of `source` inside the rectangle into this image, with one line of text over them; the others
    /// stay as they are. Null means the whole image. `source` may be this image: then texts add up.
    ///
    /// `text` [null counts as empty] stands on a line that goes through (x, y) [pixels; whole numbers are the middles
    /// of samples; any numbers, also outside]: with `align` 0 it begins there, with 1 it has its middle there, with 2
    /// it ends there. Other numbers count as 0. `height` is that of capitals and digits [pixels, to the middles of the
    /// strokes]; small letters are two thirds as high and reach a quarter below the line. Below 0 the text is mirrored
    /// from top to bottom, to be read in an image that shows its first row at the bottom. `angle` turns it about (x, y)
    /// [degrees, clockwise as it is read]. A number that is not finite draws nothing.
    ///
    /// A pen of an eighth of the height is easy to read. What it makes of samples, and all else, is as in
    /// `CImgDrawLine::Do`; strokes that meet are one shape.
    void Do(const char* text, double x, double y, double height, double angle, int align, const corvane::Pen& pen,
            CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const char* text, double x, double y, double height, double angle, int align, const corvane::Pen& pen,
            const CStlImage& source, const CRect* rect, const corvane::Run& run);

    /// The width of a text [pixels] of that height, from the middle of its first stroke to the middle of its last; 0
    /// for none.
    static double GetTextWidth(const char* text, double height);
};
