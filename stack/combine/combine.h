#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "corvane/combine/row_combiner.h"
#include "corvane/core/alignment.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stack/combine/normalise.h"

namespace corvane::stack {

/// A frame as combining sees it: where it lies on the target, and its blank value if it declares one.
struct Placement {
    Alignment alignment;
    std::optional<int> blank;
    std::vector<Normalisation> normalisation{}; ///< for each plane, done to its samples on the target; empty: none
    double weight = 1.0;                        ///< in the clipped mean [0..1]; 0 leaves the frame out of it
};

/// Reads rows of all planes of a frame, calibrated; plane p begins at samples + p * planeStride.
using RowReader =
    std::function<void(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)>;

/// Images of the target's size and planes that combining fills with counts, as `CombinedRow` tells; null for none.
struct CombineMaps {
    CStlImage* coverage = nullptr;
    CStlImage* rejectedLow = nullptr;
    CStlImage* rejectedHigh = nullptr;
};

/// How frames are combined. What comes after the text leaves the defined composite alone unless it is set.
struct CombineJob {
    CombineMethod method = CombineMethod::kMedian;
    int blank = 0;            ///< what the target holds where a frame has nothing
    std::uint64_t memory = 0; ///< what bands may take [bytes]; a band holds one row at least
    const char* text = "";    ///< names the stage of the run
    Coverage coverage = Coverage::kAll;
    CombineMaps maps{};
};

/// Combines frames of the target's size and planes into it, a band of rows at a time.
///
/// With `Coverage::kAll` the target becomes what `CImgMedianComposit` makes of the frames in memory, all declaring the
/// job's blank value if they declare one or are moved: without that a frame that leaves a border would take its own
/// zeros for blanks. The target declares it when a frame does. Without weights and normalisation that holds bit for bit.
///
/// With `Coverage::kAny` the statistic is that of the frames that have a pixel: what lies outside of a frame does not
/// count, nor NaN, nor blanks and what is interpolated from one, nor the last column's samples between two pixels, the
/// right one of which would be the next row's first. The target is blank where no frame has anything, and declares the
/// blank if there is such a pixel.
///
/// Every row is read once, in order or, of a frame turned upside down, backwards. Of a turned frame all rows that a row
/// of the target crosses are in memory together: the sine of the angle times the width, at a right angle all of them.
/// Where these would take more than half of the memory the target is combined in strips of columns, which cross fewer;
/// rows that several strips need are read again for each, those of a frame at a right angle just once. Throws what
/// `read` throws, and `Cancelled`.
CORVANE_VISIBLE void CombineFrames(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                                   CStlImage& target, const Run& run);

} // namespace corvane::stack
