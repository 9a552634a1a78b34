#include <vector>

#include "bench/combine/night.h"
#include "bench/support/bench.h"
#include "stack/combine/combine.h"

namespace corvane::bench {
namespace {

void TimeCombining(Run& run, CombineMethod method)
{
    constexpr double kFraction = 0.0137;
    const int width = Size(2048, 75);
    const int height = Size(2048, 19);
    Night night(20, width, height, kFraction);
    stack::CombinePlan plan{.grid = {.width = width, .height = height}, .rule = {method}, .blank = Night::kBlank};
    std::vector<const CStlImage*> frames;
    for (int i = 0; i < night.Count(); ++i) {
        const CStlImage& frame = night.Frame(i);
        frames.push_back(&frame);
        plan.frames.push_back({i, Alignment::Turned(night.ShiftX(i), night.ShiftY(i), 0.0, frame.GetStdCtr())});
    }
    stack::ImageSource source(frames);
    const auto combined = [&] {
        CStlImage target(-32, width, height, 1, 1.0, 0.0, 1);
        CombineFrames(plan, source, {target});
        return target;
    };
    CheckSamples(combined(), [&](int x, int y, int) { return night.Expected(x, y, method); });
    run.Time(night.Bytes(), [&] { combined(); });
}

const Line combineMedian("stack/CombineFrames/median, 20 frames", Seconds(0.35),
                         [](Run& run) { TimeCombining(run, CombineMethod::kMedian); });
const Line combineClippedMedian("stack/CombineFrames/clipped median, 20 frames", Seconds(0.5),
                                [](Run& run) { TimeCombining(run, CombineMethod::kClippedMedian); });
const Line combineClippedMean("stack/CombineFrames/clipped mean, 20 frames", Seconds(0.5),
                              [](Run& run) { TimeCombining(run, CombineMethod::kClippedMean); });

} // namespace
} // namespace corvane::bench
