#include "stack/combine/rule.h"

#include <memory>

namespace corvane::stack {

namespace {

constexpr int kFewestJudged = 3; // lights
constexpr int kSeveral = 10;
constexpr int kMany = 20;
constexpr double kUsualSigmas = 3.0;
constexpr double kSigmasOfSeveral = 4.0;
constexpr double kUsualEnds = 1.0;

RejectMethod AutomaticMethod(int lights)
{
    return lights < kFewestJudged ? RejectMethod::kNone
           : lights < kMany       ? RejectMethod::kWinsorized
                                  : RejectMethod::kSigma;
}

/// By options of which all are set.
std::unique_ptr<const Rejection> MakeRejection(const RejectOptions& options, int lights)
{
    const ClipLimits limits{*options.low, *options.high, options.iterations};
    switch (*options.method) {
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
        return DropEnds(static_cast<int>(limits.low), static_cast<int>(limits.high));
    default:
        return nullptr;
    }
}

} // namespace

RejectMethod AskedRejection(const RejectOptions& options, CombineBy combine)
{
    return options.method.value_or(combine == CombineBy::kMean ? RejectMethod::kAuto : RejectMethod::kNone);
}

RejectOptions SettledRejection(const RejectOptions& options, CombineBy combine, int lights)
{
    const RejectMethod asked = AskedRejection(options, combine);
    const bool isAuto = asked == RejectMethod::kAuto;
    const double usual = asked == RejectMethod::kMinMax                   ? kUsualEnds
                         : isAuto && lights >= kSeveral && lights < kMany ? kSigmasOfSeveral
                                                                          : kUsualSigmas;
    return {.method = isAuto ? AutomaticMethod(lights) : asked,
            .low = options.low.value_or(usual),
            .high = options.high.value_or(usual),
            .iterations = options.iterations};
}

CombineRule MakeRule(const RejectOptions& options, CombineBy combine, int lights)
{
    return {combine, MakeRejection(SettledRejection(options, combine, lights), lights)};
}

} // namespace corvane::stack
