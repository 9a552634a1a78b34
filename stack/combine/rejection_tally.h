#pragma once

#include <cstddef>
#include <vector>

#include "corvane/core/stl_image.h"
#include "stack/combine/combine.h"
#include "stack/frame_report.h"

namespace corvane::stack {

/// Counts what rejection drops of each frame, and in which parts of the grid. Of equal values all count as kept when
/// one is, and so do those that lie between others that are.
class CORVANE_VISIBLE RejectionTally {
public:
    /// For the frames of a plan; none of them are counted where the plan rejects nothing.
    explicit RejectionTally(const CombinePlan& plan);

    /// Takes in a stretch of a row of the grid, given the values of all frames and the lowest and highest that are
    /// kept; with times = -1, what was taken in like that goes out.
    void Add(int x, int row, int count, const std::vector<CombineLine>& lines, const double* low, const double* high,
             int times = 1);
    /// Takes in one more value of a frame, as too high.
    void AddHigh(std::size_t frame, int x, int row);
    /// Takes in what another thread has counted of the same plan.
    void Add(const RejectionTally& other);

    const std::vector<RejectedValues>& OfFrames() const { return frames_; } ///< in the plan's order; empty: not counted
    /// How many values were dropped, in an image of the grid as small as one that is shown at a glance.
    CStlImage Picture() const;

private:
    int across_;
    int down_;
    int cell_;                    ///< pixels of the grid to one of the picture
    std::vector<char> takesPart_; ///< a frame has a weight
    std::vector<RejectedValues> frames_;
    std::vector<int> dropped_; ///< by pixel of the picture
};

} // namespace corvane::stack
