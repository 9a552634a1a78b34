#include "corvane/geometry/resolution.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

// Bytes are those of the source.
void TimeResize(Run& run, double factor)
{
    CStlImage& frame = LargeFrame();
    const int width = static_cast<int>(frame.GetWidth() * factor);
    const int height = static_cast<int>(frame.GetHeight() * factor);
    const double stepX = static_cast<double>(frame.GetWidth()) / width;
    const double stepY = static_cast<double>(frame.GetHeight()) / height;
    CImgResolution checked(frame);
    checked.Do(&frame, width, height, 0);
    Require(checked.GetWidth() == width && checked.GetHeight() == height, "the size");
    VisitSome(static_cast<int>((frame.GetWidth() - 1) / stepX), static_cast<int>((frame.GetHeight() - 1) / stepY),
              [&](int x, int y) {
                  const double expected = frame.GetPixelGrayRaw(x * stepX, y * stepY, 0);
                  RequireClose(checked.GetPixelGrayRaw(x, y, 0), static_cast<float>(expected), x, y);
              });
    run.Time(
        frame.GetImageSize(), [&] { return CImgResolution(frame); },
        [&](CImgResolution& result) { result.Do(&frame, width, height, 0); });
}

const Line half("geometry/Resolution/to 0.5", TimesMemcpy(2.0), [](Run& run) { TimeResize(run, 0.5); });
const Line resolutionSmaller("geometry/Resolution/to 0.7", {}, [](Run& run) { TimeResize(run, 0.7); });
const Line resolutionLarger("geometry/Resolution/to 1.5", TimesMemcpy(6.0), [](Run& run) { TimeResize(run, 1.5); });

} // namespace
} // namespace corvane::bench
