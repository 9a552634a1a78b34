#include "corvane/measure/pixel_info.h"

#include <algorithm>
#include <vector>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

std::vector<float> Sorted(const CStlImage& image)
{
    std::vector<float> samples;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const float* const row = image.GetImageAdr(0, y, 0, 1);
        samples.insert(samples.end(), row, row + image.GetWidth());
    }
    std::sort(samples.begin(), samples.end());
    return samples;
}

void MeasureWhole(Run& run, bool withMedian)
{
    CImgPixelInfo frame(LargeFrame());
    const CRect whole(0, 0, frame.GetWidth(), frame.GetHeight());
    double max[3];
    double min[3];
    double mean[3];
    double median[3];
    const auto measure = [&] { frame.Calc(whole, max, min, mean, withMedian ? median : nullptr); };
    measure();
    const std::vector<float> sorted = Sorted(frame);
    Require(max[0] == sorted.back() && min[0] == sorted.front(), "an extreme");
    Require(IsClose(static_cast<float>(mean[0]), frame.GetAvrGrayRaw(0)), "the mean");
    Require(!withMedian || median[0] == sorted[sorted.size() / 2], "the median");
    run.Time(frame.GetImageSize(), measure);
}

const Line plain("measure/PixelInfo/without median", {}, [](Run& run) { MeasureWhole(run, false); });
const Line median("measure/PixelInfo/with median", TimesMemcpy(20.0), [](Run& run) { MeasureWhole(run, true); });

} // namespace
} // namespace corvane::bench
