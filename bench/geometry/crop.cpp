#include "corvane/geometry/crop.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line crop("geometry/Crop/crop", TimesMemcpy(1.2), [](Run& run) {
    CStlImage& frame = LargeFrame();
    const CRect rect(11, 7, frame.GetWidth() - 5, frame.GetHeight() - 3);
    TimeChange<CImgCrop>(
        run, frame, [&](CImgCrop& result) { result.Do(rect, &frame, 0); },
        [&](int x, int y, int plane) { return frame.GetPixelGrayRaw(x + 11, y + 7, plane); });
});

} // namespace
} // namespace corvane::bench
