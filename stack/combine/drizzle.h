#pragma once

#include <optional>
#include <vector>

#include "corvane/colour/demosaic.h"
#include "corvane/combine/drop.h"
#include "corvane/core/aligned_row.h"
#include "stack/combine/combine.h"

namespace corvane::stack {

/// Which frames are dropped onto which grid.
struct DrizzlePlan {
    /// How values are judged, on a grid as fine as the reference.
    CombinePlan judged{};
    Grid grid{};
    double drop = 0.7; ///< width of a drop [pixels of a frame, 0.1..1]
    DropKernel kernel = DropKernel::kSquare;
    /// For each frame of the source, when each is a mosaic of which colours were made: a pixel is dropped into the
    /// plane of its own filter alone, where it has the value that the sensor gave.
    std::vector<BayerPattern> patterns{};
    std::optional<RowSpan> rows{}; ///< of the reference, of which alone the result is made; unset: all
};

/// The rows of the grid that some rows of the reference become. Those of rows that follow each other do so, too.
CORVANE_VISIBLE RowSpan DrizzledRows(const RowSpan& rows, const Grid& reference, const Grid& grid);

/// What drizzling fills: rows of the grid's width, or of the reference's, from those on that the plan names.
struct DrizzleTarget {
    CStlImage& image;                  ///< of the rows that `DrizzledRows` tells
    CStlImage* weights = nullptr;      ///< of its size: sums of weight times part of a drop; null if not wanted
    CStlImage* coverage = nullptr;     ///< of its size: frames of which something fell into the pixel
    CStlImage* rejectedLow = nullptr;  ///< of the rows of the reference, as `CombineTarget`'s
    CStlImage* rejectedHigh = nullptr; ///< the same
    CStlImage* noise = nullptr;        ///< of its size: standard deviation of the value, or NaN
    RejectionTally* tally = nullptr;   ///< of the plan by which values are judged
};

/// Drops the pixels of frames, made smaller, onto a grid, where each counts by the part of it that falls into a pixel.
///
/// A pixel of the result is the mean of what falls into it, by weight of the frame times part of the drop; it is blank
/// where nothing does. So brightness is that of a pixel of the reference, whatever the scale of the grid: the flux of a
/// star is the sum of its pixels over the scale squared. What is left of a drop outside of the grid is lost.
///
/// First the values are judged, as `CombineFrames` judges them with `Coverage::kAny`, on a grid as fine as the
/// reference; the plain median as if it was clipped. A pixel is dropped when the pixel of that grid on which its middle
/// lies has kept the frame's value. Pixels of which the value there is not known, as beside a blank, are not dropped.
///
/// The noise of a pixel is told by how the values v that fall into it scatter, each with the noise that the weight w of
/// its frame stands for and with the part a of its drop: with u = w a and their sum W, the root of sum u (v - mean)^2 /
/// (sum a - sum u a / W) * sum u a / W^2. The slope of a star across the pixel counts as noise, too. Drops of 2 frames
/// must be there, or it is NaN.
///
/// The order of frames is kept for each pixel, rows are worked on side by side: the bits are the same for any number of
/// threads and any height of bands. Throws what `CombineFrames` throws. A. S. Fruchter and R. N. Hook, Drizzle: a
/// method for the linear reconstruction of undersampled images, Publications of the Astronomical Society of the Pacific
/// 114, 144, 2002.
CORVANE_VISIBLE void DrizzleFrames(const DrizzlePlan& plan, FrameSource& source, const DrizzleTarget& target,
                                   const Run& run = {}, const char* text = "Dropping frames...");

} // namespace corvane::stack
