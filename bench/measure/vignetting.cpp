#include "corvane/measure/vignetting.h"

#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line vignetting("measure/Vignetting", TimesMemcpy(1.5), [](Run& run) {
    constexpr double kFall = -3e-8;
    CStlImage& frame = LargeFrame();
    const CPoint centre(frame.GetWidth() / 2, frame.GetHeight() / 2);
    CImgFlat result(frame);
    result.Do(&frame, centre, kFall, 1.0, nullptr, 0);
    CheckSamples(result, [&](int x, int y, int plane) {
        const double r = std::hypot(x - centre.x, y - centre.y);
        return 1.0 / (kFall * r * r + 1.0) * frame.GetPixelGrayRaw(x, y, plane);
    });
    run.Time(frame.GetImageSize(), [&] { result.Do(&frame, centre, kFall, 1.0, nullptr, 0); });
});

} // namespace
} // namespace corvane::bench
