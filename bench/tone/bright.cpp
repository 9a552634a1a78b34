#include "corvane/tone/bright.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeBright(Run& run, CStlImage& frame)
{
    TimeOperation<CImgBright>(
        run, frame, [&](auto& result, auto... to) { result.Do(20.0, 64.0, 128.0, to...); },
        [&](int x, int y, int plane) {
            const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, plane)), 0);
            return frame.ToRaw(shown + (shown - 128.0) * 0.25 + 20.0, 0);
        });
}

const Line brightMono("tone/Bright/mono", TimesMemcpy(1.5), [](Run& run) { TimeBright(run, LargeFrame()); });

const Line brightColour("tone/Bright/colour", TimesMemcpy(1.5), [](Run& run) { TimeBright(run, ColourFrame()); });

} // namespace
} // namespace corvane::bench
