#include <cmath>

#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr int kLevels = 7;

double PlainSteps(const CStlImage& frame, int x, int y)
{
    double sum = 0.0;
    double row = y - 0.333333;
    for (int j = 0; j < 3; ++j, row += 0.333333) {
        double column = x - 0.333333;
        for (int i = 0; i < 3; ++i, column += 0.333333) {
            const auto shown = [&](int plane) { return frame.GetPixelGray256f(column, row, plane); };
            const double bright = frame.IsColor() ? 0.299 * shown(0) + 0.587 * shown(1) + 0.114 * shown(2) : shown(0);
            sum += std::trunc(bright * (kLevels * static_cast<double>(0.003921569F)));
        }
    }
    return sum * (255.0 / kLevels * static_cast<double>(0.11111111F));
}

void TimePosterize(Run& run, CStlImage& frame)
{
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.AAPosterizationFilter(kLevels, to...); },
        [&](int x, int y, int plane) {
            const double steps = PlainSteps(frame, x, y);
            return frame.ToRaw(frame.IsColor() && plane != 1 ? static_cast<float>(steps) : steps, plane);
        });
}

const Line posterizeMono("filter/Posterize/mono", {}, [](Run& run) { TimePosterize(run, LargeFrame()); });
const Line posterizeColour("filter/Posterize/colour", {}, [](Run& run) { TimePosterize(run, ColourFrame()); });

} // namespace
} // namespace corvane::bench
