#include <algorithm>
#include <utility>

#include "bench/support/bench.h"
#include "corvane/core/stl_image.h"

namespace corvane::bench {
namespace {

std::pair<double, double> PlainExtremes(const CStlImage& image)
{
    double low = image.GetPixelGrayRaw(0, 0, 0);
    double high = low;
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            low = std::min<double>(low, image.GetPixelGrayRaw(x, y, 0));
            high = std::max<double>(high, image.GetPixelGrayRaw(x, y, 0));
        }
    }
    return {low, high};
}

const Line calcMinMax("core/CalcMinMax", TimesMemcpy(0.6), [](Run& run) {
    CStlImage& frame = LargeFrame();
    frame.CalcMinMax();
    Require(std::pair(frame.GetMinPixel(0), frame.GetMaxPixel(0)) == PlainExtremes(frame), "minimum or maximum");
    run.Time(frame.GetImageSize(), [&] { frame.CalcMinMax(); });
});

const Line getMinMax("core/GetMinMax", TimesMemcpy(0.6), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    std::pair<double, double> found;
    frame.GetMinMax(0, &found.first, &found.second);
    Require(found == PlainExtremes(frame), "minimum or maximum");
    run.Time(frame.GetImageSize(), [&] {
        frame.GetMinMax(0, &found.first, &found.second);
        benchmark::DoNotOptimize(found);
    });
});

/// A caller's own loop over the two conversions, with a stretch between them.
void StretchRows(const CStlImage& from, CStlImage& to)
{
    for (int y = 0; y < from.GetHeight(); ++y) {
        const float* const in = from.GetImageAdr(0, y, 0, 1);
        float* const out = to.GetImageAdr(0, y, 0);
        for (int x = 0; x < from.GetWidth(); ++x) {
            out[x] = static_cast<float>(to.ToRaw(from.To256(static_cast<double>(in[x]), 0) * 1.5, 0));
        }
    }
}

const Line callersLoop("core/To256AndToRaw", {}, [](Run& run) {
    const CStlImage& frame = LargeFrame();
    CStlImage result(frame);
    StretchRows(frame, result);
    CheckSamples(result, [&](int x, int y, int) {
        return 500.0 * (((frame.GetPixelGrayRaw(x, y, 0) - 900.0) / 500.0 * 255.0) * 1.5) * 0.00392156862745098 + 900.0;
    });
    run.Time(frame.GetImageSize(), [&] { StretchRows(frame, result); });
});

const Line cutOutOfLevel("core/CutOutOfLevel", TimesMemcpy(1.5), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    CStlImage result(frame);
    result.CutOutOfLevel();
    CheckSamples(result,
                 [&](int x, int y, int) { return std::clamp<double>(frame.GetPixelGrayRaw(x, y, 0), 900.0, 1400.0); });
    run.Time(frame.GetImageSize(), [&] { result.CutOutOfLevel(); });
});

} // namespace
} // namespace corvane::bench
