#include "corvane/geometry/flip.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeFlip(Run& run, int direction)
{
    CStlImage& frame = LargeFrame();
    const int right = frame.GetWidth() - 1;
    const int bottom = frame.GetHeight() - 1;
    CImgFlip result(frame);
    result.Do(direction, &frame, 0);
    CheckSamples(result, [&](int x, int y, int plane) {
        return frame.GetPixelGrayRaw(direction == 1 ? right - x : x, direction == 1 ? y : bottom - y, plane);
    });
    run.Time(frame.GetImageSize(), [&] { result.Do(direction, &frame, 0); });
}

const Line vertical("geometry/Flip/vertical", TimesMemcpy(1.2), [](Run& run) { TimeFlip(run, 0); });
const Line horizontal("geometry/Flip/horizontal", TimesMemcpy(1.2), [](Run& run) { TimeFlip(run, 1); });

} // namespace
} // namespace corvane::bench
