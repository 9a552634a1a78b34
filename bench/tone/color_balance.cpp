#include "corvane/tone/color_balance.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line balance("tone/ColorBalance", TimesMemcpy(1.5), [](Run& run) {
    const double offsets[] = {12.5, -3.0, 40.0};
    CStlImage& frame = ColourFrame();
    TimeOperation<CImgColorBalance>(
        run, frame, [&](auto& result, auto... to) { result.Do(offsets[0], offsets[1], offsets[2], to...); },
        [&](int x, int y, int plane) {
            const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, plane)), 0);
            return frame.ToRaw(shown + offsets[plane], 0);
        });
});

} // namespace
} // namespace corvane::bench
