#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "corvane/combine/row_combiner.h"
#include "stack/combine/grown_rejection.h"
#include "stack/combine/placed_frame.h"
#include "stack/combine/rejection_tally.h"

namespace corvane::stack {

/// What one thread combines with.
struct Workbench {
    /// `countsRejected`: what is rejected will be entered in the tally.
    Workbench(const CombinePlan& plan, bool countsRejected);

    double* Values(std::size_t frame) { return values.data() + frame * kStretch; }
    int* Valid(std::size_t frame) { return valid.data() + frame * kStretch; }

    /// @name What is dropped for its neighbours' sake
    /// @{

    /// Looks it up in a row, within columns left to right - 1. Returns stretches of few columns that hold all of it.
    std::vector<Stretch> FindGrown(const GrownRejection& grown, int plane, int row, int left, int right);
    /// Combines such a stretch again, whose values are there, without it: pixels of which at least 2 values are left,
    /// and with `Coverage::kAll` those that every frame has. Fills rows for them alone, corrects the tally if these are
    /// counted, and marks what is gone invalid.
    void CombineAgain(const Stretch& stretch, Coverage coverage, const CombinedRow& result, bool isCounted = true);
    /// @}

    RowCombiner combiner;
    std::vector<double> values; ///< of a stretch of a row, frame after frame
    std::vector<int> valid;
    std::vector<CombineLine> lines;
    int fewest;            ///< frames that have some pixel
    double low[kStretch];  ///< the lowest value of each pixel of the stretch that counts, where that is asked for
    double high[kStretch]; ///< and the highest
    std::optional<RejectionTally> tally; ///< what this thread has counted

private:
    void LeaveOutGrown(const Stretch& stretch, Coverage coverage);

    RowCombiner again_; ///< of the pixels of which values were left out
    std::vector<char> takesPart_;
    std::vector<ColumnBits> grown_;                    ///< by frame
    std::vector<std::pair<std::size_t, int>> leftOut_; ///< frames and columns of a stretch
};

} // namespace corvane::stack
