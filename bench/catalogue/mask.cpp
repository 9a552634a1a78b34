#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/bench.h"
#include "catalogue/apply.h"
#include "corvane/core/mix.h"

namespace corvane::bench {
namespace {

/// A mask whose samples go from 0 to 1, with many of either.
CStlImage MixingMask(const CStlImage& frame)
{
    CStlImage mask(-32, frame.GetWidth(), frame.GetHeight(), 1, 1.0, 0.0, 1);
    for (int y = 0; y < mask.GetHeight(); ++y) {
        float* const row = mask.GetImageAdr(0, y, 0);
        for (int x = 0; x < mask.GetWidth(); ++x) {
            row[x] = std::clamp(static_cast<float>((x + 3 * y) % 64) / 32.0F - 0.5F, 0.0F, 1.0F);
        }
    }
    return mask;
}

// A copy of the mask, a look at its range, the step and the mixing.
const Line maskedAdd("catalogue/Mask/add by a mask", TimesMemcpy(8.0), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    const CStlImage mask = MixingMask(frame);
    const std::vector<catalogue::Step> steps{{"add", {{"value", 100.0}, {"mask", AsValue(mask)}, {"strength", 0.5}}}};
    CheckSamples(Apply(frame, steps), [&](int x, int y, int plane) {
        const double before = frame.GetPixelGrayRaw(x, y, plane);
        const double after = static_cast<float>(before + 100.0);
        return before + 0.5 * mask.GetPixelGrayRaw(x, y, 0) * (after - before);
    });
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(Apply(frame, steps).GetWidth()); });
});

// Three images are read and one is written.
const Line mixing("catalogue/Mask/mixing alone", TimesMemcpy(3.0), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    const CStlImage mask = MixingMask(frame);
    CStlImage result(frame);
    const auto mix = [&] { MixImages(result, frame, &mask, 0.5, {.threads = 1}); };
    const float before = frame.GetPixelGrayRaw(60, 0, 0); // where the mask is 1
    result.SetPixelGrayRaw(60, 0, before + 100.0F, 0);
    mix();
    Require(result.GetPixelGrayRaw(60, 0, 0) == before + 50.0F, "the mix is wrong");
    run.Time(frame.GetImageSize(), mix);
});

} // namespace
} // namespace corvane::bench
