#include "corvane/combine/median_composit.h"

#include <cmath>
#include <deque>

#include "bench/combine/night.h"
#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

struct Method {
    const char* name;
    void (CImgMedianComposit::*calc)();
    CombineMethod plain;
    double limit; ///< seconds for 20 frames of 2048 x 2048
};

constexpr Method kMethods[] = {
    {"median", &CImgMedianComposit::Calc, CombineMethod::kMedian, 0.35},
    {"clipped median", &CImgMedianComposit::CalcClipping, CombineMethod::kClippedMedian, 0.5},
    {"clipped mean", &CImgMedianComposit::AddAvrCalcClipping, CombineMethod::kClippedMean, 0.5},
};

void Stack(Night& night, CStlImage& target, const Method& method)
{
    CImgMedianComposit composit(&target);
    for (int y = 0; y < target.GetHeight(); ++y) {
        for (int i = 0; i < night.Count(); ++i) {
            composit.Store(&night.Frame(i), y, night.ShiftX(i), night.ShiftY(i), 0.0);
        }
        (composit.*method.calc)();
    }
}

void TimeStack(Run& run, const Method& method, int frames, int height, double fraction)
{
    const int width = Size(2048, 75);
    Night night(frames, width, height, fraction);
    const auto stack = [&](CStlImage& target) { Stack(night, target, method); };
    const auto makeTarget = [=] { return CStlImage(-32, width, height, 1, 1.0, 0.0, 1); };
    CStlImage checked = makeTarget();
    stack(checked);
    CheckSamples(checked, [&](int x, int y, int) { return night.Expected(x, y, method.plain); });
    run.Time(night.Bytes(), [&] {
        CStlImage target = makeTarget();
        stack(target);
    });
}

std::deque<Line> MakeLines()
{
    constexpr double kFraction = 0.0137;
    // As many samples as 20 whole frames, for which n log n in time allows this much more.
    const double perSample = std::log(200.0) / std::log(20.0);
    std::deque<Line> lines;
    for (const Method& method : kMethods) {
        const std::string name = std::string("combine/MedianComposit/") + method.name;
        lines.emplace_back(name + ", 20 frames, whole shifts", Seconds(method.limit),
                           [&](Run& run) { TimeStack(run, method, 20, Size(2048, 19), 0.0); });
        lines.emplace_back(name + ", 20 frames, fractional shifts", Seconds(method.limit),
                           [&](Run& run) { TimeStack(run, method, 20, Size(2048, 19), kFraction); });
        lines.emplace_back(name + ", 200 frames of 204 rows", Seconds(method.limit * perSample),
                           [&](Run& run) { TimeStack(run, method, 200, Size(204, 9), kFraction); });
    }
    return lines;
}

const std::deque<Line> medianLines = MakeLines();

} // namespace
} // namespace corvane::bench
