#include "corvane/draw/draw_text.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line drawText("draw/DrawText/a turned line of 40 letters", TimesMemcpy(2.0), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const double middle = frame.GetWidth() * 0.5;
    const double height = frame.GetWidth() / 60.0;
    CImgDrawText result(frame);
    const auto draw = [&] {
        result.Do("The whirlpool galaxy M51, 600 s, Johnson", middle, middle, height, 20.0, 1, {height / 8.0, 500.0, 1},
                  &frame, nullptr, 0);
    };
    draw();
    int drawn = 0;
    VisitSome(frame.GetWidth(), frame.GetHeight(), [&](int x, int y) {
        drawn += result.GetPixelGrayRaw(x, y, 0) != frame.GetPixelGrayRaw(x, y, 0) ? 1 : 0;
    });
    Require(IsTiny() || drawn > 0, "no letter was drawn");
    RequireClose(result.GetPixelGrayRaw(0, 0, 0), frame.GetPixelGrayRaw(0, 0, 0), 0, 0);
    run.Time(frame.GetImageSize(), draw);
});

} // namespace
} // namespace corvane::bench
