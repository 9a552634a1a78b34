#include "stack/combine/rule.h"

#include <memory>

namespace corvane::stack {

namespace {

constexpr int kFewestJudged = 3; // lights
constexpr int kMany = 20;
constexpr double kUsualSigmas = 3.0;
constexpr double kUsualEnds = 1.0;
constexpr int kUsualGrowth = 1;

RejectMethod AutomaticMethod(int lights)
{
    return lights < kFewestJudged ? RejectMethod::kNone
           : lights < kMany       ? RejectMethod::kWinsorized
                                  : RejectMethod::kSigma;
}

/// What growth finds, limits need not.
double AutomaticSigmas(int lights, int grow)
{
    if (grow == 0) {
        return lights >= 10 && lights < kMany ? 4.0 : kUsualSigmas;
    }
    return lights < 8 ? kUsualSigmas : lights < kMany ? 4.5 : 3.25;
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
    const int grow = options.grow.value_or(isAuto ? kUsualGrowth : 0);
    const RejectMethod method = isAuto ? AutomaticMethod(lights) : asked;
    const double usual = asked == RejectMethod::kMinMax ? kUsualEnds
                         : isAuto                       ? AutomaticSigmas(lights, grow)
                                                        : kUsualSigmas;
    return {.method = method,
            .low = options.low.value_or(usual),
            .high = options.high.value_or(usual),
            .iterations = options.iterations,
            .grow = method == RejectMethod::kNone ? 0 : grow};
}

CombineRule MakeRule(const RejectOptions& options, CombineBy combine, int lights)
{
    return {combine, MakeRejection(SettledRejection(options, combine, lights), lights)};
}

} // namespace corvane::stack
