#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr double kMeanWeight = 0.7;

void TimeMean(Run& run, CStlImage& frame, int type)
{
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.MeanFilter(type, kMeanWeight, to...); },
        [&](int x, int y, int plane) { return PlainMean(Window(frame, x, y, plane, type), kMeanWeight); });
}

void TimeMeanWithoutEdge(Run& run, int type)
{
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.MeanWithoutEdgeFilter(type, kMeanWeight, to...); },
        [&](int x, int y, int plane) {
            const std::vector<double> cross = Window(frame, x, y, plane, 0);
            const double laplacian = std::fabs(4.0 * cross[2] - (cross[1] + cross[3] + cross[0] + cross[4]));
            const float shown = frame.To256(static_cast<float>(laplacian + frame.GetLevelMin(0)), 0);
            const double flat = 1.0 - std::clamp(shown / 255.0, 0.0, 1.0);
            return PlainMean(Window(frame, x, y, plane, type), flat * flat * kMeanWeight);
        });
}

const Line meanCross("filter/Mean/cross", {}, [](Run& run) { TimeMean(run, LargeFrame(), 0); });
const Line meanSquare3("filter/Mean/3 x 3", TimesMemcpy(2.5), [](Run& run) { TimeMean(run, LargeFrame(), 1); });
const Line meanSquare5("filter/Mean/5 x 5", {}, [](Run& run) { TimeMean(run, LargeFrame(), 2); });
const Line meanColour("filter/Mean/3 x 3, colour", TimesMemcpy(2.5), [](Run& run) { TimeMean(run, ColourFrame(), 1); });
const Line withoutEdge("filter/MeanWithoutEdge/3 x 3", {}, [](Run& run) { TimeMeanWithoutEdge(run, 1); });

} // namespace
} // namespace corvane::bench
