#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Sends samples through tabulated curves on the display scale; the levels stay.
///
/// A curve is an array of n floats, at least 2: entry i is the output, as a fraction of 255, for the display value
/// i * 255 / (n - 1). A display value between two entries takes the lower one's output, without interpolation. Beyond
/// the table the two ends differ: above 255 the line of the last two entries goes on where it rises and stays level
/// where it falls; below 0 the line of the first two goes on from 0 where it falls and is 0 where it rises. An end
/// whose two entries are equal keeps their value.
class CORVANE_API CImgToneCurve : public CStlImage {
public:
    CImgToneCurve() = default;
    /// A copy of the image to be changed.
    explicit CImgToneCurve(const CStlImage& source) : CStlImage(source) {}

    /// Maps the samples of `source` inside the rectangle into this image; the others stay as they are. Null means the
    /// whole image.
    ///
    /// `curves` holds the master curve, and for a colour image the curves of planes 0, 1 and 2 after it: a sample goes
    /// through its plane's curve, then through the master. All have `n` entries. Nothing happens when n is below 2 or a
    /// curve is null. Display values are by the levels of this image's own planes and are not clamped; blanks are
    /// samples like others; NaN stays NaN. Reports "Adjusting Curves..." with the rows of the whole image as total,
    /// whatever the rectangle; ESC is ignored.
    void Do(const float* const* curves, int n, CStlImage* source, CRect* rect, int showProgress);
    /// The same, as a part of a run.
    void Do(const float* const* curves, int n, const CStlImage& source, const CRect* rect, const corvane::Run& run);

protected:
    /// The display value that a curve of n entries gives for display value x; x itself when there is no curve or n is
    /// below 2.
    double CalcToneCurve(const float* curve, int n, double x) const;
};
