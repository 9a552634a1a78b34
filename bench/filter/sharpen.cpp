#include <algorithm>
#include <cmath>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr double kStrength = 0.8;

double PlainSharp(const std::vector<double>& window, double strength)
{
    const double centre = window[window.size() / 2];
    const double others = static_cast<double>(window.size() - 1);
    const double sum = std::accumulate(window.begin(), window.end(), 0.0) - centre;
    return (2.0 * others * centre - strength * sum) / (others * (2.0 - strength));
}

void TimeSharp(Run& run, int type)
{
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.SharpFilter(type, kStrength, to...); },
        [&](int x, int y, int plane) { return PlainSharp(Window(frame, x, y, plane, type), kStrength); });
}

const Line sharpenCross("filter/Sharp/cross", {}, [](Run& run) { TimeSharp(run, 0); });
const Line sharpenSquare3("filter/Sharp/3 x 3", TimesMemcpy(2.5), [](Run& run) { TimeSharp(run, 1); });
const Line sharpenSquare5("filter/Sharp/5 x 5", {}, [](Run& run) { TimeSharp(run, 2); });

const Line sharpEdge("filter/SharpEdge/3 x 3", {}, [](Run& run) {
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.SharpEdgeFilter(1, kStrength, to...); },
        [&](int x, int y, int plane) {
            const std::vector<double> near = Window(frame, x, y, plane, 0);
            const double laplacian = std::fabs(4.0 * near[2] - (near[1] + near[3] + near[0] + near[4]));
            const float shown = frame.To256(static_cast<float>(laplacian + frame.GetLevelMin(0)), 0);
            const double edge = std::clamp(shown / 255.0, 0.0, 1.0);
            return PlainSharp(Window(frame, x, y, plane, 1), kStrength * edge * edge);
        });
});

} // namespace
} // namespace corvane::bench
