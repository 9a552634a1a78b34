#include "corvane/combine/mosic.h"

#include <algorithm>
#include <cmath>

#include "bench/support/bench.h"
#include "corvane/core/display_scale.h"

namespace corvane::bench {
namespace {

/// Joins two skies that overlap by half on a canvas of the large frame's size; where both are, the lighter shows.
void TimeLighter(Run& run, double dx, double degrees)
{
    const int size = LargeFrame().GetWidth();
    Sky first(size * 3 / 4, size, 1, 1);
    Sky second(size * 3 / 4, size, 1, 2);
    second.SetDefaultCenter();
    CImgMosic canvas(LargeFrame());
    const auto join = [&] {
        canvas.Do(&first, 0, 0, &second, size / 4 + dx, 0.0, degrees, kMosaicLighter, nullptr, nullptr, 0, 0, nullptr,
                  0);
    };
    join();
    const auto sample = [&](const CStlImage& image, int x, int y, double shift, double angle) {
        return image.GetPixelGrayRaw(x, y, shift, 0.0, std::sin(angle * kDegree), std::cos(angle * kDegree), 1.0, -1,
                                     0.0, 0, nullptr, nullptr, nullptr);
    };
    // No sample of a sky is below 0, which stands outside of it.
    CheckSamples(canvas, [&](int x, int y, int) {
        return std::max(sample(first, x, y, 0.0, 0.0), sample(second, x, y, size / 4 + dx, degrees));
    });
    run.Time(canvas.GetImageSize(), join);
}

const Line mosicWholeShift("combine/Mosic/lighter, whole shift", {}, [](Run& run) { TimeLighter(run, 0.0, 0.0); });
const Line mosicTurn("combine/Mosic/lighter, turn", {}, [](Run& run) { TimeLighter(run, 0.5, 1.5); });

} // namespace
} // namespace corvane::bench
