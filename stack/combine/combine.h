#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "corvane/combine/row_combiner.h"
#include "corvane/core/interpolation.h"
#include "corvane/core/mapping.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stack/combine/frame_source.h"
#include "stack/combine/normalise.h"

namespace corvane::stack {

/// A frame that is combined, and where it lies.
struct Placement {
    int frame = 0;                              ///< which one of the source
    Mapping mapping{};                          ///< onto the reference, in pixels of the frames
    std::vector<Normalisation> normalisation{}; ///< for each plane, done to its samples on the grid; empty: none
    double weight = 1.0;                        ///< in the clipped mean [0..1]; 0 leaves the frame out of it
};

/// The pixels of the result. It begins at a corner of a pixel of the reference.
struct Grid {
    int width = 0;
    int height = 0;
    double scale = 1.0; ///< its pixels to one of the reference, above 0
    int left = 0;       ///< the first column, in pixels of the reference
    int top = 0;        ///< the first row

    /// @name Where a pixel's middle lies on the reference
    /// @{
    double XOnReference(double column) const { return (column + 0.5) / scale - 0.5 + left; }
    double YOnReference(double row) const { return (row + 0.5) / scale - 0.5 + top; }
    /// @}
};

/// Columns of a row that are combined at a time: those of all frames stay in a near cache.
inline constexpr int kStretch = 256;

/// Pixels of a row of a grid, `kStretch` at most.
struct Stretch {
    int x;
    int row;
    int plane;
    int count;
};

/// Which frames are combined, where each of them lies, and how.
struct CombinePlan {
    std::vector<Placement> frames{};
    Grid grid{};
    CombineRule rule{CombineMethod::kMedian};
    Coverage coverage = Coverage::kAll;
    /// Of values that are rejected as too high and lie in a trail or a larger hit, those of their frame within so many
    /// columns and rows go as well; see `GrownRejection`. Then the rest is judged again.
    int grow = 0;
    Interpolation interpolation = Interpolation::kBilinear; ///< of frames that are moved by parts of a pixel, or turned
    int blank = 0;                                          ///< what the target holds where a frame has nothing
    /// What bands may take, of what the memory budget leaves [bytes]; a band holds one row at least.
    std::uint64_t memory = std::numeric_limits<std::uint64_t>::max();
    /// Makes bands as long as the memory lets them be, for a source that opens its frames anew for each; otherwise they
    /// are as long as is quickest.
    bool areBandsLong = false;
};

class RejectionTally;

/// What combining fills: an image of any band of the grid's rows. The counts have its size; each as `CombinedRow`
/// tells, null for those that are not wanted.
struct CombineTarget {
    CStlImage& image;
    int firstRow = 0; ///< of the grid
    CStlImage* coverage = nullptr;
    CStlImage* rejectedLow = nullptr;
    CStlImage* rejectedHigh = nullptr;
    CStlImage* noise = nullptr;
    RejectionTally* tally = nullptr; ///< of the plan; null: nothing is counted
};

/// Combines frames of the target's planes into it, a band of rows at a time; `text` names the stage of the run.
///
/// With `Coverage::kAll` a grid of the frames' size becomes what `CImgMedianComposit` makes of the frames in memory,
/// all declaring the plan's blank value if they declare one or are moved: without that a frame that leaves a border
/// would take its own zeros for blanks. The target declares it when a frame does. Without weights and normalisation
/// that holds bit for bit, of bilinear interpolation. The others take what is interpolated from a blank as missing.
///
/// With `Coverage::kAny` the statistic is that of the frames that have a pixel: what lies outside of a frame does not
/// count, nor NaN, nor blanks and what is interpolated from one, nor the last column's samples between two pixels, the
/// right one of which would be the next row's first. The target is blank where no frame has anything, and declares the
/// blank if there is such a pixel.
///
/// The rows of the grid come out the same whichever bands are asked for. Within a call every row of a frame is read
/// once, in order or, of a frame turned upside down, backwards. Of a turned frame all rows that a row of the target
/// crosses are in memory together: the sine of the angle times the width, at a right angle all of them. Where these
/// would take more than half of the memory the target is combined in strips of columns, which cross fewer; rows that
/// several strips need are read again for each, those of a frame at a right angle just once. Frames are read, and rows
/// combined, on the threads of the run. Throws Error for a target that is no band of the grid or has other planes than
/// a frame, what the source throws, and `Cancelled`.
CORVANE_VISIBLE void CombineFrames(const CombinePlan& plan, FrameSource& source, const CombineTarget& target,
                                   const Run& run = {}, const char* text = "Combining frames...");

} // namespace corvane::stack
