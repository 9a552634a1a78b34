#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr double kLevel = 1050.0;

double Faded(double place, double level, double fade)
{
    return place > level - fade ? 1.0 - (place - (level - fade)) / fade : 1.0;
}

const Line backgroundMono("filter/BackgroundSmoothing/mono", {}, [](Run& run) {
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.BkgSmooth(kLevel, 1, 1.0, to...); },
        [&](int x, int y, int plane) {
            const double v = frame.GetPixelGrayRaw(x, y, plane);
            const double fade = frame.GetLevelRange(0) * 0.05;
            return v > kLevel ? v : PlainMean(Window(frame, x, y, plane, 1), Faded(v, kLevel, fade));
        });
});

const Line backgroundColour("filter/BackgroundSmoothing/colour", {}, [](Run& run) {
    CStlImage& frame = ColourFrame();
    const double level = frame.To256(kLevel, 0);
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.BkgSmooth(kLevel, 1, 1.0, to...); },
        [&](int x, int y, int plane) {
            const auto shown = [&](int p) { return frame.GetPixelGray256f(x, y, p); };
            const double bright = 0.299 * shown(0) + 0.587 * shown(1) + 0.114 * shown(2);
            return bright > level ? static_cast<double>(frame.GetPixelGrayRaw(x, y, plane))
                                  : PlainMean(Window(frame, x, y, plane, 1), Faded(bright, level, 16.0));
        });
});

} // namespace
} // namespace corvane::bench
