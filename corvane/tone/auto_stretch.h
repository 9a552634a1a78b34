#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// What lifts the median between black and white.
enum class AutoStretchCurve {
    kMidtone,
    kAsinh, ///< as far as it can; one factor for all planes of a pixel, so that stars keep their colours
};

/// How an image is stretched by its own statistics.
struct AutoStretchLimits {
    double shadows = -2.8; ///< where black lies from the median [standard deviations of the noise]
    double target = 0.25;  ///< where the median comes to between black and white [above 0, below 1]
    bool linked = true;    ///< one stretch for all planes, so that colours stay
    AutoStretchCurve curve = AutoStretchCurve::kMidtone;
};

/// The stretch of one plane: its black and white, which become its levels, and the midtone between them.
struct AutoStretchPlane {
    double low;     ///< [raw units]
    double high;    ///< [raw units]
    double median;  ///< its place between them [0..1]
    double midtone; ///< of `MidtoneStretch`
};

/// Chooses the stretch of each plane; no sample changes.
///
/// Black is median + shadows * 1.4826 * MAD, MAD the median absolute deviation from the median, white the largest
/// sample, and the midtone brings the median to the target. Linked, the median is the mean of the planes' medians, the
/// deviation the mean of theirs, and the extremes those of all planes. Medians are exact; blanks, NaN and infinities do
/// not count. An image that is mostly bright, whose median lies above the middle between its smallest and its largest
/// sample and more than a tenth of the deviation above its mean, is stretched as its negative would be: white is median
/// - shadows * 1.4826 * MAD, black the smallest sample, and the median comes to 1 - target. (Dead pixels make the
/// middle lie low, but hardly move the mean.) Where the deviation is 0 the extremes are black and white. A plane
/// without two different samples keeps its levels and a midtone of 1/2.
CORVANE_VISIBLE std::vector<AutoStretchPlane> ChooseAutoStretch(const CStlImage& image,
                                                                const AutoStretchLimits& limits);

/// Writes the samples of `source`, stretched so, into `result`, a copy of it, whose levels become black and white. The
/// asinh curve brings the mean of the medians' places to the target where it lies below it. Blanks and NaN stay.
/// Reports "Stretching...".
CORVANE_VISIBLE void AutoStretch(CStlImage& result, const CStlImage& source, const AutoStretchLimits& limits,
                                 const Run& run);

} // namespace corvane
