#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/draw/pen.h"

/// Draws straight lines into the samples of an image, with smooth edges and round ends.
class CORVANE_API CImgDrawLine : public CStlImage {
public:
    CImgDrawLine() = default;
    /// A copy of the image to be drawn on.
    explicit CImgDrawLine(const CStlImage& source) : CStlImage(source) {}

    /// Writes the samples of `source` inside the rectangle into this image, with a line over them; the others stay as
    /// they are. Null means the whole image. `source` may be this image: then lines add up.
    ///
    /// The line goes from (x0, y0) to (x1, y1) [pixels; whole numbers are the middles of samples; any numbers, also
    /// outside; at 1e15 rounding moves the line by 0.1]. Ends that are equal make a dot. An end that is not finite, or
    /// a thickness of 0 or less, draws nothing.
    ///
    /// A sample is covered by as much of the line as lies within half a pixel of the sample's middle, measured across
    /// the line, so that one thinner than a pixel is paler. It becomes the mean of itself and the pen's value, weighted
    /// by that. A blank sample, NaN or infinity is replaced where half of it or more is covered, and stays elsewhere.
    /// A display value goes through the levels of each plane of this image. The levels stay.
    ///
    /// Of a smaller source the last row repeats; columns to the right of it are drawn on as they are. Reports
    /// "Calculating..."; ESC is ignored.
    void Do(double x0, double y0, double x1, double y1, const corvane::Pen& pen, CStlImage* source, CRect* rect,
            int showProgress);
    /// The same, as a part of a run.
    void Do(double x0, double y0, double x1, double y1, const corvane::Pen& pen, const CStlImage& source,
            const CRect* rect, const corvane::Run& run);
};
