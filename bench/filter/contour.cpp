#include <algorithm>
#include <cmath>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

const Line contourMono("filter/Contour/mono", {}, [](Run& run) {
    constexpr int kLevels = 9;
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.ContourFilter(kLevels, 0, to...); },
        [&](int x, int y, int plane) {
            const auto reached = [&](double v) {
                return std::clamp(std::floor(frame.To256(static_cast<float>(v), 0) / 25.5), 0.0, 9.0);
            };
            const std::vector<double> cross = Window(frame, x, y, plane, 0);
            const double darkest = *std::min_element(cross.begin(), cross.end());
            return reached(cross[2]) > reached(darkest) ? frame.GetLevelMax(0) : frame.GetLevelMin(0);
        });
});

} // namespace
} // namespace corvane::bench
