#include "corvane/colour/rgb_composite.h"

#include <cmath>

#include "bench/support/bench.h"
#include "corvane/core/display_scale.h"

namespace corvane::bench {
namespace {

/// Combines three skies, of which the second and the third are moved and turned by so much and twice as much.
void TimeRgbComposite(Run& run, double shift, double degrees)
{
    const int size = Size(2048, 61);
    Sky r(size, size, 1, 1);
    Sky g(size, size, 1, 2);
    Sky b(size, size, 1, 3);
    CStlImage* const frames[] = {&r, &g, &b};
    for (CStlImage* frame : frames) {
        frame->SetDefaultCenter();
    }
    CImgRgbCmpst result(Sky(size, size, 3, 4));
    const auto combine = [&] {
        result.Do(&r, 0.0, 0.0, 0.0, &g, shift, -shift, degrees, &b, 2.0 * shift, -2.0 * shift, 2.0 * degrees, nullptr,
                  0, nullptr, 0);
    };
    combine();
    CheckSamples(result, [&](int x, int y, int plane) {
        const double angle = plane * degrees * kDegree;
        return frames[plane]->GetPixelGrayRaw(x, y, plane * shift, -plane * shift, std::sin(angle), std::cos(angle),
                                              1.0, 0, 0.0, 0, nullptr, nullptr, nullptr);
    });
    run.Time(result.GetImageSize(), combine);
}

const Line whole("colour/RgbComposite/whole shifts", {}, [](Run& run) { TimeRgbComposite(run, 3.0, 0.0); });
const Line fractional("colour/RgbComposite/fractional shifts", {}, [](Run& run) { TimeRgbComposite(run, 3.3, 0.0); });
const Line turned("colour/RgbComposite/turns", {}, [](Run& run) { TimeRgbComposite(run, 3.3, 0.7); });

} // namespace
} // namespace corvane::bench
