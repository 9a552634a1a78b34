#include "corvane/geometry/resize.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr int kMiddle = 4;

void TimeCanvas(Run& run, int widthChange, int heightChange)
{
    CStlImage& frame = LargeFrame();
    const int width = frame.GetWidth() + widthChange;
    const int height = frame.GetHeight() + heightChange;
    float background = 0.0F;
    const auto change = [&](CImgResize& result) { result.Do(width, height, kMiddle, &background, &frame, 0); };
    TimeChange<CImgResize>(run, frame, change, [&](int x, int y, int plane) {
        const int fromX = x - widthChange / 2;
        const int fromY = y - heightChange / 2;
        const bool isPicture = fromX >= 0 && fromX < frame.GetWidth() && fromY >= 0 && fromY < frame.GetHeight();
        return isPicture ? frame.GetPixelGrayRaw(fromX, fromY, plane) : frame.GetLevelMin(0);
    });
}

const Line resizeLarger("geometry/Resize/larger canvas", TimesMemcpy(1.2), [](Run& run) { TimeCanvas(run, 200, 100); });
const Line resizeSmaller("geometry/Resize/smaller canvas", TimesMemcpy(1.2),
                         [](Run& run) { TimeCanvas(run, -20, -10); });

} // namespace
} // namespace corvane::bench
