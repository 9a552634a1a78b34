#include "corvane/geometry/scroll.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line scroll("geometry/Scroll/scroll", TimesMemcpy(1.2), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const int width = frame.GetWidth();
    const int height = frame.GetHeight();
    CImgScroll result(frame);
    result.Do(100, -70, &frame, 0);
    CheckSamples(result, [&](int x, int y, int plane) {
        return frame.GetPixelGrayRaw((x - 100 % width + width) % width, (y + 70) % height, plane);
    });
    run.Time(frame.GetImageSize(), [&] { result.Do(100, -70, &frame, 0); });
});

} // namespace
} // namespace corvane::bench
