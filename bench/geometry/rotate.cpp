#include "corvane/geometry/rotate.h"

#include "bench/support/bench.h"
#include "corvane/core/alignment.h"

namespace corvane::bench {
namespace {

constexpr double kAngle = 33.3; // degrees

const Line turn("geometry/Rotate/turn by 33.3 degrees", TimesMemcpy(14.0), [](Run& run) {
    CStlImage& frame = LargeFrame();
    double background = -1.0;
    CImgRotate result(frame);
    result.Do(kAngle, &background, &frame, 0, 0);
    frame.SetDefaultCenter();
    const Alignment turned = Alignment::Turned(0.0, 0.0, kAngle, frame.GetStdCtr());
    CheckSamples(result, [&](int x, int y, int plane) {
        return frame.GetPixelGrayRaw(x, y, 0.0, 0.0, turned.sine, turned.cosine, 1.0, plane, background, 0, nullptr,
                                     nullptr, nullptr);
    });
    run.Time(frame.GetImageSize(), [&] { result.Do(kAngle, &background, &frame, 0, 0); });
});

const Line quarterTurn("geometry/Rotate/quarter turn", TimesMemcpy(2.5), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const int bottom = frame.GetHeight() - 1;
    TimeChange<CImgRotate>(
        run, frame, [&](CImgRotate& result) { result.Do90(1, &frame, 0); },
        [&](int x, int y, int plane) { return frame.GetPixelGrayRaw(y, bottom - x, plane); });
});

const Line halfTurn("geometry/Rotate/half turn", TimesMemcpy(1.2), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const int right = frame.GetWidth() - 1;
    const int bottom = frame.GetHeight() - 1;
    CImgRotate result(frame);
    result.Do180(&frame, 0);
    CheckSamples(result, [&](int x, int y, int plane) { return frame.GetPixelGrayRaw(right - x, bottom - y, plane); });
    run.Time(frame.GetImageSize(), [&] { result.Do180(&frame, 0); });
});

} // namespace
} // namespace corvane::bench
