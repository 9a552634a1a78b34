#include "corvane/draw/draw_line.h"

#include <algorithm>
#include <cstdlib>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line drawLine("draw/DrawLine/a diagonal", TimesMemcpy(2.0), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const int last = std::min(frame.GetWidth(), frame.GetHeight()) - 1;
    CImgDrawLine result(frame);
    const auto draw = [&] { result.Do(0.0, 0.0, last, last, {2.0, 500.0, 1}, &frame, nullptr, 0); };
    draw();
    CheckSamples(result, [&](int x, int y, int) {
        const bool isEdge = x != y && std::abs(x - y) < 3;
        return isEdge ? result.GetPixelGrayRaw(x, y, 0) : x == y && x <= last ? 500.0F : frame.GetPixelGrayRaw(x, y, 0);
    });
    run.Time(frame.GetImageSize(), draw);
});

} // namespace
} // namespace corvane::bench
