#include "corvane/tone/reduce_tone.h"

#include <algorithm>
#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line reduce("tone/ReduceTone", TimesMemcpy(1.5), [](Run& run) {
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgReduceTone>(
        run, frame, [&](auto& result, auto... to) { result.Do(12, to...); },
        [&](int x, int y, int) {
            const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, 0)), 0);
            return frame.ToRaw(std::floor(12.0 * std::clamp(shown, 0.0, 255.0) / 256.0) / 12.0 * 255.0, 0);
        });
});

} // namespace
} // namespace corvane::bench
