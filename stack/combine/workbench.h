#pragma once

#include <optional>
#include <vector>

#include "corvane/combine/row_combiner.h"
#include "stack/combine/placed_frame.h"
#include "stack/combine/rejection_tally.h"

namespace corvane::stack {

/// Columns of a row that are combined at a time: those of all frames stay in a near cache.
inline constexpr int kStretch = 256;

/// What one thread combines with.
struct Workbench {
    /// `countsRejected`: what is rejected will be entered in the tally.
    explicit Workbench(const CombinePlan& plan, bool countsRejected)
        : combiner(plan.rule, plan.coverage, WeightsOf(plan.frames), plan.blank), values(plan.frames.size() * kStretch),
          valid(values.size()), fewest(static_cast<int>(plan.frames.size()))
    {
        for (std::size_t i = 0; i < plan.frames.size(); ++i) {
            lines.push_back({Values(i), Valid(i)});
        }
        if (countsRejected) {
            tally.emplace(plan);
        }
    }

    double* Values(std::size_t frame) { return values.data() + frame * kStretch; }
    int* Valid(std::size_t frame) { return valid.data() + frame * kStretch; }

    RowCombiner combiner;
    std::vector<double> values; ///< of a stretch of a row, frame after frame
    std::vector<int> valid;
    std::vector<CombineLine> lines;
    int fewest;            ///< frames that have some pixel
    double low[kStretch];  ///< the lowest value of each pixel of the stretch that counts, where that is asked for
    double high[kStretch]; ///< and the highest
    std::optional<RejectionTally> tally; ///< what this thread has counted
};

} // namespace corvane::stack
