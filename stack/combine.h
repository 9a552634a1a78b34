#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "corvane/combine/combine_rows.h"
#include "corvane/core/alignment.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/types.h"

namespace corvane::stack {

/// A frame as combining sees it: where it lies on the target, and its blank value if it declares one.
struct Placement {
    Alignment alignment;
    std::optional<int> blank;
};

/// Reads rows of all planes of a frame, calibrated; plane p begins at samples + p * planeStride.
using RowReader =
    std::function<void(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)>;

/// How frames are combined.
struct CombineJob {
    CombineMethod method = CombineMethod::kMedian;
    int blank = 0;            ///< what the target holds where a frame has nothing
    std::uint64_t memory = 0; ///< what bands may take [bytes]; a band holds one row at least
    HWND progressWindow = nullptr;
    const char* text = ""; ///< what the progress channel says
};

/// Combines frames of the target's size and planes into it, a band of rows at a time. Every row is read once.
///
/// The target becomes what `CImgMedianComposit` makes of the frames in memory, all declaring the job's blank value if
/// they declare one or are moved: without that a frame that leaves a border would take its own zeros for blanks. The
/// target declares it when a frame does. Throws what `read` throws, and `Cancelled`.
void CombineFrames(const std::vector<Placement>& frames, const RowReader& read, const CombineJob& job,
                   CStlImage& target);

} // namespace corvane::stack
