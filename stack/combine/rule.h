#pragma once

#include <optional>

#include "corvane/combine/row_combiner.h"
#include "corvane/platform/export.h"

namespace corvane::stack {

/// How values that do not count are told from those that do; see `corvane/combine/rejection.h` for each.
enum class RejectMethod {
    kAuto, ///< by the number of lights, as `SettledRejection` tells
    kNone,
    kSigma,      ///< `ClipByDeviation`
    kWinsorized, ///< `ClipByWinsorizedDeviation`
    kLinearFit,  ///< `ClipByLine`
    kEsd,        ///< `DropDeviates`
    kMad,        ///< `ClipByMedianDeviation`
    kMinMax,     ///< `DropEnds`
};

/// What is rejected, and by which limits.
struct RejectOptions {
    std::optional<RejectMethod> method{}; ///< unset: auto for the mean, none for what else is made of the values
    /// Scales below the middle, or how many of the lowest; unset: as `SettledRejection` tells, else 3, or 1.
    std::optional<double> low{};
    std::optional<double> high{}; ///< the same above
    int iterations = 0;           ///< at most; 0: until nothing changes
    /// What lies within so many pixels of a trail or a larger hit goes, too, as `CombinePlan::grow` tells; unset: as
    /// `SettledRejection` tells, else 0.
    std::optional<int> grow{};
};

/// The method that the options ask for, which may be auto.
RejectMethod AskedRejection(const RejectOptions& options, CombineBy combine);

/// The options with all set for so many lights, the method one other than auto.
///
/// Auto takes none for two lights, of which nothing tells which is right, and from three on winsorized deviations,
/// whose scale an outlier hardly widens, and grows what it rejects by a pixel. From 8 on its limits are 4.5: few values
/// tell their own deviation poorly, so that 3 drops 1 good value of 100, the far ones, and that costs 3 % of depth; of
/// fewer than 8 lights 4.5 leaves some hits. From 20 on it takes deviations, which cost least time, and limits of 3.25:
/// where two hits meet they widen the deviation, so that 3.5 leaves some of 20 lights. Without growth the limits are 3,
/// and 4 for 10 to 19 lights.
RejectOptions SettledRejection(const RejectOptions& options, CombineBy combine, int lights);

/// What becomes of the values that so many lights have at a pixel.
CombineRule MakeRule(const RejectOptions& options, CombineBy combine, int lights);

} // namespace corvane::stack
