#include "corvane/geometry/soft_binning.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeBinning(Run& run, int block)
{
    CStlImage& frame = LargeFrame();
    const auto bin = [&](CImgSoftBinning& result) { result.Do(block, block, 0, 1, &frame, 0); };
    TimeChange<CImgSoftBinning>(run, frame, bin, [&](int x, int y, int plane) {
        float sum = 0.0F;
        for (int i = 0; i < block * block; ++i) {
            sum += frame.GetPixelGrayRaw(x * block + i % block, y * block + i / block, plane);
        }
        return sum;
    });
}

const Line by2("geometry/SoftBinning/2 x 2", TimesMemcpy(1.2), [](Run& run) { TimeBinning(run, 2); });
const Line by3("geometry/SoftBinning/3 x 3", {}, [](Run& run) { TimeBinning(run, 3); });
const Line by5("geometry/SoftBinning/5 x 5", {}, [](Run& run) { TimeBinning(run, 5); });

} // namespace
} // namespace corvane::bench
