#pragma once

#include "corvane/core/stl_image.h"

namespace corvane {

/// How like the samples of an image are to those of a cut-out.
struct CutOutLikeness {
    double correlation; ///< -1..1; NaN where either is flat or less than half of the pairs are defined
    double rms;         ///< what is left once mean and gain are matched [raw units of the image]
};

/// Compares a part of the cut-out with what lies under it when its first sample is on (x, y) of the image, where the
/// part must lie whole. Summed in double; undefined samples take no part.
CutOutLikeness CompareAt(const CStlImage& cutOut, const CRect& part, const CStlImage& image, int x, int y);

/// How far the peak of the correlation lies from a place, in parts of a pixel: that of the paraboloid through the place
/// and its neighbours, compared by the part of the cut-out that lies in the image at all of them. (0, 0) where they do
/// not make a peak.
struct PeakOffset {
    double x = 0.0;
    double y = 0.0;
};
PeakOffset PeakAbout(const CStlImage& cutOut, const CStlImage& image, int x, int y);

} // namespace corvane
