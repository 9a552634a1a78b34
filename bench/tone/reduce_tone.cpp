#include "corvane/tone/reduce_tone.h"

#include <algorithm>
#include <cmath>

#include "bench/support/check.h"
#include "bench/support/frames.h"
#include "bench/support/line.h"

namespace corvane::bench {
namespace {

const Line reduce("tone/ReduceTone", TimesMemcpy(1.5), [](Run& run) {
    CStlImage& frame = LargeFrame();
    CImgReduceTone result(frame);
    const auto posterise = [&] { result.Do(12, &frame, nullptr, 0); };
    posterise();
    CheckSamples(result, [&](int x, int y, int) {
        const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, 0)), 0);
        return frame.ToRaw(std::floor(12.0 * std::clamp(shown, 0.0, 255.0) / 256.0) / 12.0 * 255.0, 0);
    });
    run.Time(frame.GetImageSize(), posterise);
});

} // namespace
} // namespace corvane::bench
