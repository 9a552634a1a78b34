#include "corvane/core/stl_image.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line copyConstruction("core/CopyConstruction", TimesMemcpy(1.2), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    CheckSamples(CStlImage(frame), [&](int x, int y, int plane) { return frame.GetPixelGrayRaw(x, y, plane); });
    run.Time(frame.GetImageSize(), [&] { const CStlImage copy(frame); });
});

} // namespace
} // namespace corvane::bench
