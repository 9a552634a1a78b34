#include <cmath>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

void TimeUnsharp(Run& run, int type, double factor)
{
    constexpr double kThreshold = 0.02;
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.UnSharpMask(1.5, type, 0.7, kThreshold, to...); },
        [&](int x, int y, int plane) {
            const std::vector<double> window = Window(frame, x, y, plane, type);
            const double centre = window[window.size() / 2];
            const double mean = std::accumulate(window.begin(), window.end(), 0.0) * factor;
            const double blurred = static_cast<float>(PlainMean(window, 0.7));
            return std::fabs(mean / centre - 1.0) >= kThreshold ? (centre - blurred) * 1.5 + centre : centre;
        });
}

const Line unsharpMaskSquare3("filter/UnsharpMask/3 x 3", TimesMemcpy(2.5),
                              [](Run& run) { TimeUnsharp(run, 1, 0.1111111111111111); });
const Line unsharpMaskSquare5("filter/UnsharpMask/5 x 5", {},
                              [](Run& run) { TimeUnsharp(run, 2, 0.047619047619047616); });

} // namespace
} // namespace corvane::bench
