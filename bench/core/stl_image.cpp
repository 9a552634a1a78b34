#include "corvane/core/stl_image.h"

#include "bench/support/check.h"
#include "bench/support/frames.h"
#include "bench/support/line.h"

namespace corvane::bench {
namespace {

const Line copyConstruction("core/CopyConstruction", TimesMemcpy(1.2), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    CheckSamples(CStlImage(frame), [&](int x, int y, int plane) { return frame.GetPixelGrayRaw(x, y, plane); });
    run.Time(frame.GetImageSize(), [&] { const CStlImage copy(frame); });
});

} // namespace
} // namespace corvane::bench
