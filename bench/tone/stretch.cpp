#include "corvane/tone/stretch.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>

#include "bench/support/bench.h"
#include "corvane/tone/auto_stretch.h"
#include "corvane/tone/hyperbolic_stretch.h"

namespace corvane::bench {
namespace {

using PlainStretch = std::function<double(double)>;

/// A monochrome frame, stretched over its levels, against a plain form.
Line Stretched(const std::string& name, Limit limit, StretchFunction function, PlainStretch plain)
{
    return {"tone/Stretch/" + name, limit, [function = std::move(function), plain = std::move(plain)](Run& run) {
                CStlImage& frame = LargeFrame();
                CStlImage result(frame);
                const auto again = [&] { Stretch(result, frame, {function}, {}, nullptr, {}); };
                again();
                CheckSamples(result, [&](int x, int y, int) {
                    const double place =
                        (frame.GetPixelGrayRaw(x, y, 0) - frame.GetLevelMin(0)) / frame.GetLevelRange(0);
                    return frame.GetLevelMin(0) + plain(std::clamp(place, 0.0, 1.0)) * frame.GetLevelRange(0);
                });
                run.Time(frame.GetImageSize(), again);
            }};
}

const Line stretchMtf =
    Stretched("mtf", TimesMemcpy(4.0), MidtoneStretch(0.2), [](double x) { return -0.8 * x / (-0.6 * x - 0.2); });
const Line stretchAsinh =
    Stretched("asinh", {}, AsinhStretch(50.0), [](double x) { return std::asinh(50.0 * x) / std::asinh(50.0); });
const Line stretchLog =
    Stretched("log", {}, LogStretch(50.0), [](double x) { return std::log1p(50.0 * x) / std::log1p(50.0); });
const Line stretchGamma = Stretched("gamma", {}, GammaStretch(2.2), [](double x) { return std::pow(x, 1.0 / 2.2); });
const Line stretchHyperbolic = Stretched("ghs", {}, HyperbolicStretch({.d = 9.0}),
                                         [](double x) { return std::expm1(-9.0 * x) / std::expm1(-9.0); });

const Line stretchColours("tone/Stretch/asinh of colours", {}, [](Run& run) {
    CStlImage& frame = ColourFrame();
    CStlImage result(frame);
    const auto again = [&] { Stretch(result, frame, {AsinhStretch(50.0)}, {.perPlane = false}, nullptr, {}); };
    again();
    CheckSamples(result, [&](int x, int y, int plane) {
        double places[3];
        for (int p = 0; p < 3; ++p) {
            places[p] =
                std::clamp((frame.GetPixelGrayRaw(x, y, p) - frame.GetLevelMin(p)) / frame.GetLevelRange(p), 0.0, 1.0);
        }
        const double mean = (places[0] + places[1] + places[2]) / 3.0;
        const double most = std::max({places[0], places[1], places[2]});
        const double factor = std::min(std::asinh(50.0 * mean) / std::asinh(50.0) / mean, 1.0 / most);
        return frame.GetLevelMin(plane) + (mean > 0.0 ? places[plane] * factor : 0.0) * frame.GetLevelRange(plane);
    });
    run.Time(frame.GetImageSize(), again);
});

const Line stretchAuto("tone/AutoStretch", {}, [](Run& run) {
    CStlImage& frame = LargeFrame();
    CStlImage result(frame);
    const auto again = [&] { AutoStretch(result, frame, {}, {}); };
    again();
    const AutoStretchPlane chosen = ChooseAutoStretch(frame, {}).front();
    const double m = chosen.midtone;
    CheckSamples(result, [&](int x, int y, int) {
        const double range = chosen.high - chosen.low;
        const double place = std::clamp((frame.GetPixelGrayRaw(x, y, 0) - chosen.low) / range, 0.0, 1.0);
        return chosen.low + (m - 1.0) * place / ((2.0 * m - 1.0) * place - m) * range;
    });
    run.Time(frame.GetImageSize(), again);
});

} // namespace
} // namespace corvane::bench
