#include <algorithm>
#include <vector>

#include "bench/support/bench.h"
#include "corvane/core/stl_image.h"

namespace corvane::bench {
namespace {

constexpr int kBins = 5000;
constexpr double kLow = 880.0;
constexpr double kHigh = 1120.0;

std::vector<int> PlainHistogram(const CStlImage& image)
{
    std::vector<int> counts(kBins);
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            const double v = image.GetPixelGrayRaw(x, y, 0);
            if (v >= kLow && v <= kHigh) {
                const int bin = static_cast<int>((v - kLow) / (kHigh - kLow) * kBins);
                ++counts[static_cast<std::size_t>(std::min(bin, kBins - 1))];
            }
        }
    }
    return counts;
}

const Line histogram("core/Histogram5000", TimesMemcpy(4.0), [](Run& run) {
    CStlImage& frame = LargeFrame();
    std::vector<int> counts(kBins);
    const auto count = [&] { frame.GetHistGram(counts.data(), kBins, kLow, kHigh, 0, nullptr, 0, 0); };
    count();
    Require(counts == PlainHistogram(frame), "a bin");
    run.Time(frame.GetImageSize(), count);
});

const Line mean("core/Mean", TimesMemcpy(0.6), [](Run& run) {
    const CStlImage& frame = LargeFrame();
    long double sum = 0.0L;
    for (int y = 0; y < frame.GetHeight(); ++y) {
        for (int x = 0; x < frame.GetWidth(); ++x) {
            sum += frame.GetPixelGrayRaw(x, y, 0);
        }
    }
    const auto expected = static_cast<float>(sum / static_cast<long double>(frame.GetPixelCount()));
    Require(IsClose(frame.GetAvrGrayRaw(0), expected), "mean");
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(frame.GetAvrGrayRaw(0)); });
});

} // namespace
} // namespace corvane::bench
