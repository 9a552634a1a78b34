#include "corvane/combine/composit.h"

#include <cmath>

#include "bench/support/bench.h"
#include "corvane/core/display_scale.h"

namespace corvane::bench {
namespace {

struct Placement {
    double dx;
    double dy;
    double degrees;
};

/// Adds a shifted and turned sky to the large frame, in raw or display space.
void TimeSum(Run& run, const Placement& at, int displaySpace)
{
    CStlImage& base = LargeFrame();
    Sky overlay(base.GetWidth(), base.GetHeight(), 1, 2);
    overlay.SetDefaultCenter();
    CImgComposit result(base);
    const auto sum = [&] { result.Do(&base, &overlay, at.dx, at.dy, at.degrees, kCompositeSum, displaySpace); };
    sum();
    const double sine = std::sin(at.degrees * kDegree);
    const double cosine = std::cos(at.degrees * kDegree);
    CheckSamples(result, [&](int x, int y, int) {
        int isOutside = 0;
        const double b =
            overlay.GetPixelGrayRaw(x, y, at.dx, at.dy, sine, cosine, 1.0, -1, 0.0, 0, &isOutside, nullptr, nullptr);
        const double blank = displaySpace != 0 ? base.GetLevelMin(0) : result.GetBlank();
        // Sums of display values are sums above black.
        const double black = displaySpace != 0 ? overlay.GetLevelMin(0) : 0.0;
        return isOutside != 0 ? blank : base.GetPixelGrayRaw(x, y, 0) + (b - black);
    });
    run.Time(base.GetImageSize(), sum);
}

void TimeDesaturate(Run& run, int radius)
{
    CStlImage& base = LargeFrame();
    Sky overlay(base.GetWidth(), base.GetHeight(), 1, 2);
    base.CalcMinMax();
    overlay.CalcMinMax();
    CImgComposit result(base);
    // Nothing is brighter than twice the maximum, so the smaller of both values shows, but for the border.
    const auto replace = [&](CRect* rect) {
        result.Do(&base, &overlay, 0.0, 0.0, 0.0, kCompositeDesaturate, 1.0, 0, 0, 2.0, radius, rect, 0, -1);
    };
    replace(nullptr);
    CheckSamples(result, [&](int x, int y, int) {
        const bool isBorder = x < 1 || y < 1 || x > base.GetWidth() - 2 || y > base.GetHeight() - 2;
        const float a = base.GetPixelGrayRaw(x, y, 0);
        return isBorder ? a : std::fmin(a, overlay.GetPixelGrayRaw(x, y, 0));
    });
    run.Time(base.GetImageSize(), [&] { replace(nullptr); });
}

const Line asItLies("combine/Composit/sum", {}, [](Run& run) { TimeSum(run, {0.0, 0.0, 0.0}, 0); });
const Line compositWholeShift("combine/Composit/sum, whole shift", {}, [](Run& run) {
    TimeSum(run, {7.0, -5.0, 0.0}, 0);
});
const Line fractionalShift("combine/Composit/sum, fractional shift", {}, [](Run& run) {
    TimeSum(run, {7.3, -5.6, 0.0}, 0);
});
const Line compositTurn("combine/Composit/sum, turn", {}, [](Run& run) { TimeSum(run, {7.3, -5.6, 33.3}, 0); });
const Line displaySpace("combine/Composit/sum, display space", {}, [](Run& run) { TimeSum(run, {7.0, -5.0, 0.0}, 1); });
const Line desaturate("combine/Composit/desaturate", {}, [](Run& run) { TimeDesaturate(run, 0); });
const Line desaturateNear("combine/Composit/desaturate, radius 2", {}, [](Run& run) { TimeDesaturate(run, 2); });

} // namespace
} // namespace corvane::bench
