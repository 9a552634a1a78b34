#include "stack/combine/rule.h"

#include <memory>

namespace corvane::stack {

namespace {

constexpr int kFewestJudged = 3; // lights
constexpr int kMany = 20;
constexpr double kUsualSigmas = 3.0;
constexpr double kUsualEnds = 1.0;

std::unique_ptr<const Rejection> MakeRejection(RejectMethod method, const RejectOptions& options, int lights)
{
    const double low = LimitOf(method, options.low);
    const double high = LimitOf(method, options.high);
    const ClipLimits limits{low, high, options.iterations};
    switch (method) {
    case RejectMethod::kSigma:
        return ClipByDeviation(limits);
    case RejectMethod::kWinsorized:
        return ClipByWinsorizedDeviation(limits);
    case RejectMethod::kLinearFit:
        return ClipByLine(limits);
    case RejectMethod::kEsd:
        return DropDeviates(lights);
    case RejectMethod::kMad:
        return ClipByMedianDeviation(limits);
    case RejectMethod::kMinMax:
        return DropEnds(static_cast<int>(low), static_cast<int>(high));
    default:
        return nullptr;
    }
}

} // namespace

RejectMethod AskedRejection(const RejectOptions& options, CombineBy combine)
{
    return options.method.value_or(combine == CombineBy::kMean ? RejectMethod::kAuto : RejectMethod::kNone);
}

RejectMethod ChosenRejection(const RejectOptions& options, CombineBy combine, int lights)
{
    const RejectMethod asked = AskedRejection(options, combine);
    if (asked != RejectMethod::kAuto) {
        return asked;
    }
    return lights < kFewestJudged ? RejectMethod::kNone
           : lights < kMany       ? RejectMethod::kWinsorized
                                  : RejectMethod::kSigma;
}

CombineRule MakeRule(const RejectOptions& options, CombineBy combine, int lights)
{
    return {combine, MakeRejection(ChosenRejection(options, combine, lights), options, lights)};
}

double LimitOf(RejectMethod method, const std::optional<double>& limit)
{
    return limit.value_or(method == RejectMethod::kMinMax ? kUsualEnds : kUsualSigmas);
}

} // namespace corvane::stack
