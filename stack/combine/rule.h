#pragma once

#include <optional>

#include "corvane/combine/row_combiner.h"
#include "corvane/platform/export.h"

namespace corvane::stack {

/// How values that do not count are told from those that do; see `corvane/combine/rejection.h` for each.
enum class RejectMethod {
    kAuto, ///< by the number of lights, as `ChosenRejection` tells
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
    std::optional<double> low{};          ///< scales below the middle, or how many of the lowest; unset: 3, or 1
    std::optional<double> high{};         ///< the same above
    int iterations = 0;                   ///< at most; 0: until nothing changes
};

/// The method that the options ask for, which may be auto.
RejectMethod AskedRejection(const RejectOptions& options, CombineBy combine);

/// The method for so many lights, one other than auto.
///
/// Of two lights nothing tells which is right, so none. From three on winsorized deviations, whose scale an outlier hardly
/// widens. From 20 on deviations: they need more than eleven values for one to lie 3 of them off, and pass over some hits
/// below 20, but of good values they keep more, which is worth 2 % of depth.
RejectMethod ChosenRejection(const RejectOptions& options, CombineBy combine, int lights);

/// What becomes of the values that so many lights have at a pixel.
CombineRule MakeRule(const RejectOptions& options, CombineBy combine, int lights);

/// The limit that holds for a method, given that of the options.
double LimitOf(RejectMethod method, const std::optional<double>& limit);

} // namespace corvane::stack
