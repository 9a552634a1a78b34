#include "corvane/tone/invert.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void CheckInverted(const CStlImage& result, const CStlImage& frame)
{
    CheckSamples(result, [&](int x, int y, int plane) {
        return frame.ToRaw(255.0 - frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, plane)), plane), plane);
    });
}

const Line constructAndInvert("tone/Invert/construct and invert", TimesMemcpy(1.5), [](Run& run) {
    CStlImage& frame = LargeFrame();
    CImgInvert checked(frame);
    checked.Do(&frame, nullptr, 0);
    CheckInverted(checked, frame);
    run.Time(frame.GetImageSize(), [&] {
        CImgInvert result(frame);
        result.Do(&frame, nullptr, 0);
    });
});

const Line invert("tone/Invert/invert", TimesMemcpy(1.5), [](Run& run) {
    CStlImage& frame = LargeFrame();
    CImgInvert result(frame);
    result.Do(&frame, nullptr, 0);
    CheckInverted(result, frame);
    run.Time(frame.GetImageSize(), [&] { result.Do(&frame, nullptr, 0); });
});

} // namespace
} // namespace corvane::bench
