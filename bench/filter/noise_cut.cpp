#include <algorithm>
#include <cmath>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

void TimeNoiseCut(Run& run, int type)
{
    constexpr double kThreshold = 0.05;
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.NoiseCut(type, kThreshold, 0, 1, to...); },
        [&](int x, int y, int plane) {
            std::vector<double> window = Window(frame, x, y, plane, type);
            const double centre = window[window.size() / 2];
            std::sort(window.begin(), window.end());
            const double median = window[window.size() / 2];
            return centre > median && std::fabs(median / centre - 1.0) > kThreshold ? median : centre;
        });
}

const Line noiseCutSquare3("filter/NoiseCut/3 x 3", {}, [](Run& run) { TimeNoiseCut(run, 1); });
const Line noiseCutSquare5("filter/NoiseCut/5 x 5", {}, [](Run& run) { TimeNoiseCut(run, 2); });

} // namespace
} // namespace corvane::bench
