#include <cmath>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

void TimeLaplacian(Run& run, int type)
{
    constexpr double kWeights[][9] = {
        {0, -1, 0, -1, 4, -1, 0, -1, 0}, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, {1, -2, 1, -2, 4, -2, 1, -2, 1}};
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.LaplacianFilter(type, to...); },
        [&](int x, int y, int plane) {
            const std::vector<double> window = Window(frame, x, y, plane, 1);
            return std::fabs(std::inner_product(window.begin(), window.end(), kWeights[type], 0.0)) +
                   frame.GetLevelMin(0);
        });
}

const Line direct("filter/Laplacian/4 neighbours", TimesMemcpy(2.5), [](Run& run) { TimeLaplacian(run, 0); });
const Line laplacianAll("filter/Laplacian/8 neighbours", TimesMemcpy(2.5), [](Run& run) { TimeLaplacian(run, 1); });
const Line weighted("filter/Laplacian/weighted", TimesMemcpy(2.5), [](Run& run) { TimeLaplacian(run, 2); });

} // namespace
} // namespace corvane::bench
