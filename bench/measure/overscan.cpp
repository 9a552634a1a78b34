#include "corvane/measure/overscan.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr int kColumns = 32;

double MeanOf(const std::vector<double>& values)
{
    double sum = 0.0;
    for (const double v : values) {
        sum += v;
    }
    return sum / static_cast<double>(values.size());
}

/// The mean of the first columns, of what lies within 3 sigma of their median when they are clipped.
double PlainBias(const CStlImage& image, int clip)
{
    std::vector<double> values;
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < kColumns; ++x) {
            values.push_back(image.GetPixelGrayRaw(x, y, 0));
        }
    }
    if (clip != 0) {
        std::sort(values.begin(), values.end());
        const double mean = MeanOf(values);
        std::vector<double> squares;
        for (const double v : values) {
            squares.push_back((v - mean) * (v - mean));
        }
        const double reach = 3.0 * std::sqrt(MeanOf(squares));
        const double median = values[values.size() / 2];
        std::erase_if(values, [=](double v) { return std::fabs(v - median) >= reach; });
    }
    return MeanOf(values);
}

void MeasureOverscan(Run& run, int clip)
{
    const CStlImage& frame = LargeFrame();
    const auto copy = [&] { return CImgOverScan(frame); };
    const auto correct = [=](CImgOverScan& image) { image.Do(0, kColumns - 1, 0, image.GetHeight() - 1, clip); };
    CImgOverScan result(frame);
    correct(result);
    const double bias = PlainBias(frame, clip);
    CheckSamples(result, [&](int x, int y, int) { return frame.GetPixelGrayRaw(x, y, 0) - bias; });
    run.Time(frame.GetImageSize(), copy, correct);
}

// The time holds that of the automatic levels at the end, which is most of it.
const Line overscanMean("measure/Overscan/mean", {}, [](Run& run) { MeasureOverscan(run, 0); });
const Line clipped("measure/Overscan/clipped", {}, [](Run& run) { MeasureOverscan(run, 1); });

} // namespace
} // namespace corvane::bench
