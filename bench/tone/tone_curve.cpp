#include "corvane/tone/tone_curve.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

std::vector<float> PowerCurve(int entries, double exponent)
{
    std::vector<float> curve;
    for (int i = 0; i < entries; ++i) {
        curve.push_back(static_cast<float>(std::pow(i / (entries - 1.0), exponent)));
    }
    return curve;
}

/// A rising curve from 0 to 1 at a display value.
double At(const std::vector<float>& curve, double shown)
{
    if (shown < 0.0) {
        return 0.0;
    }
    const std::size_t last = curve.size() - 1;
    const double steps = static_cast<double>(last);
    const double slope = (static_cast<double>(curve[last]) - curve[last - 1]) * steps;
    const auto entry = static_cast<std::size_t>(steps * std::min(shown, 255.0) * 0.00392156862745098);
    return shown > 255.0 ? slope * (shown - 255.0) + 255.0 : 255.0 * curve[entry];
}

void TimeCurves(Run& run, CStlImage& frame, int entries)
{
    const std::vector<float> channel = PowerCurve(entries, 0.8);
    const std::vector<float> master = PowerCurve(entries, 0.5);
    const float* const curves[] = {master.data(), channel.data(), channel.data(), channel.data()};
    TimeOperation<CImgToneCurve>(
        run, frame, [&](auto& result, auto... to) { result.Do(curves, entries, to...); },
        [&](int x, int y, int plane) {
            const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, plane)), plane);
            return frame.ToRaw(At(master, frame.IsColor() ? At(channel, shown) : shown), plane);
        });
}

/// A monochrome frame with a curve and with levels that hold all of its samples, or not.
Line Mono(const std::string& name, int entries, double min, double max, Limit limit = {})
{
    return {"tone/ToneCurve/" + name, limit, [=](Run& run) {
                CStlImage frame(LargeFrame());
                frame.SetLevel(0, min, max);
                TimeCurves(run, frame, entries);
            }};
}

const Line drawn = Mono("256 entries", 256, 890.3, 6000.7, TimesMemcpy(1.5));
const Line smooth = Mono("16384 entries", 16384, 890.3, 6000.7);
const Line stars = Mono("stars above white", 256, 900.1, 1400.7);
const Line dark = Mono("half below black", 256, 1000.3, 1400.7);
// Round levels may put steps on whole counts, and rounding there asks for a division.
const Line whole = Mono("steps on samples", 4096, 890.0, 6000.0);

const Line toneCurveColour("tone/ToneCurve/colour", {}, [](Run& run) { TimeCurves(run, ColourFrame(), 256); });

} // namespace
} // namespace corvane::bench
