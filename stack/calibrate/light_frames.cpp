#include "stack/calibrate/light_frames.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace corvane::stack {

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

} // namespace

LightFrames::LightFrames(CalibratedFrames& frames, std::vector<BayerPattern> patterns, DemosaicMethod method)
    : frames_(frames), patterns_(std::move(patterns)), method_(method)
{}

FrameFacts LightFrames::Facts(int frame) const
{
    FrameFacts facts = frames_.Facts(frame);
    facts.planes = patterns_.empty() ? facts.planes : 3;
    return facts;
}

void LightFrames::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    if (patterns_.empty()) {
        frames_.Read(frame, firstRow, rowCount, samples, planeStride);
    } else {
        ReadMosaic(frame, firstRow, rowCount, samples, planeStride);
    }
}

/// Blanks spread in the colours as NaN does, and come back as blanks.
void LightFrames::ReadMosaic(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const int width = Width();
    const int first = std::max(firstRow - kDemosaicMargin, 0);
    const int end = std::min(firstRow + rowCount + kDemosaicMargin, Height());
    mosaic_.resize(static_cast<std::size_t>(end - first) * width);
    frames_.Read(frame, first, end - first, mosaic_.data(), static_cast<std::ptrdiff_t>(mosaic_.size()));
    const FrameFacts facts = Facts(frame);
    if (facts.blank) {
        std::replace_if(mosaic_.begin(), mosaic_.end(), facts.IsBlank(), kNaN);
    }
    DemosaicRows({mosaic_.data(), width, Height(), first, end - first}, patterns_[static_cast<std::size_t>(frame)],
                 method_, firstRow, rowCount, samples, samples + planeStride, samples + 2 * planeStride);
    for (int plane = 0; plane < 3 && facts.blank; ++plane) {
        float* begin = samples + plane * planeStride;
        std::replace_if(
            begin, begin + static_cast<std::ptrdiff_t>(rowCount) * width, [](float v) { return v != v; },
            static_cast<float>(*facts.blank));
    }
}

CStlImage LightFrames::ReadImage(int frame, int firstRow, int rowCount)
{
    constexpr int kRowsAtOnce = 64;
    const auto [width, height, planes, blank] = Facts(frame);
    CStlImage image(-32, width, rowCount, planes, 1.0, 0.0, 1);
    image.SetBlankUsed(blank ? 1 : 0);
    image.SetBlank(blank.value_or(0));
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(kRowsAtOnce) * Width();
    std::vector<float> samples(static_cast<std::size_t>(stride) * planes);
    for (int row = 0; row < rowCount; row += kRowsAtOnce) {
        const int rows = std::min(kRowsAtOnce, rowCount - row);
        Read(frame, firstRow + row, rows, samples.data(), stride);
        for (int i = 0; i < rows * planes; ++i) {
            const float* from = samples.data() + i / rows * stride + static_cast<std::ptrdiff_t>(i % rows) * Width();
            std::copy_n(from, Width(), image.GetImageAdr(0, row + i % rows, i / rows));
        }
    }
    return image;
}

} // namespace corvane::stack
