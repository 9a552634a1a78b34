#include "stack/calibrate/light_frames.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "corvane/core/memory_budget.h"
#include "stars/field_blocks.h"

namespace corvane::stack {

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr int kMosaicRowsAtOnce = 128; // many more than the margin, and few enough to stay in a near cache

/// Rows of a mosaic, with those about them that decide their colours. What the next rows need too is kept.
class MosaicWindow {
public:
    /// For at most so many rows at a time.
    MosaicWindow(CalibratedFrames& frames, int frame, int rows)
        : frames_(frames), frame_(frame), facts_(frames.Facts(frame)),
          rows_(static_cast<std::size_t>(rows + 2 * kDemosaicMargin) * facts_.width)
    {}

    /// Those of rows that follow the ones before.
    MosaicRows About(int firstRow, int rowCount)
    {
        const int first = std::max(firstRow - kDemosaicMargin, 0);
        const int end = std::min(firstRow + rowCount + kDemosaicMargin, facts_.height);
        const int kept = std::max(end_ - first, 0);
        if (kept > 0) {
            std::copy_n(Row(first), static_cast<std::ptrdiff_t>(kept) * facts_.width, rows_.data());
        }
        first_ = first;
        Read(first + kept, end);
        end_ = end;
        return {rows_.data(), facts_.width, facts_.height, first, end - first};
    }

private:
    float* Row(int y) { return rows_.data() + static_cast<std::ptrdiff_t>(y - first_) * facts_.width; }

    void Read(int first, int end)
    {
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(end - first) * facts_.width;
        frames_.ReadPart(frame_, first, end - first, Row(first), count);
        if (facts_.blank) {
            std::replace_if(Row(first), Row(first) + count, facts_.IsBlank(), kNaN);
        }
    }

    CalibratedFrames& frames_;
    int frame_;
    FrameFacts facts_;
    std::vector<float> rows_;
    int first_ = 0; ///< of those in memory
    int end_ = 0;
};

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
    ReadPart(frame, firstRow, rowCount, samples, planeStride);
    frames_.Release(frame);
}

void LightFrames::ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    if (patterns_.empty()) {
        frames_.ReadPart(frame, firstRow, rowCount, samples, planeStride);
    } else {
        ReadMosaic(frame, firstRow, rowCount, samples, planeStride);
    }
}

/// Blanks spread in the colours as NaN does, and come back as blanks.
void LightFrames::ReadMosaic(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const FrameFacts facts = frames_.Facts(frame);
    MosaicWindow window(frames_, frame, std::min(rowCount, kMosaicRowsAtOnce));
    for (int row = 0; row < rowCount; row += kMosaicRowsAtOnce) {
        const int rows = std::min(kMosaicRowsAtOnce, rowCount - row);
        float* const part = samples + static_cast<std::ptrdiff_t>(row) * facts.width;
        DemosaicRows(window.About(firstRow + row, rows), patterns_[static_cast<std::size_t>(frame)], method_,
                     firstRow + row, rows, part, part + planeStride, part + 2 * planeStride);
        for (int plane = 0; plane < 3 && facts.blank; ++plane) {
            float* const begin = part + plane * planeStride;
            std::replace_if(
                begin, begin + static_cast<std::ptrdiff_t>(rows) * facts.width, [](float v) { return v != v; },
                static_cast<float>(*facts.blank));
        }
    }
}

CStlImage LightFrames::ReadImage(int frame, const Run& run)
{
    const auto [width, height, planes, blank] = Facts(frame);
    CStlImage image(-32, width, height, planes, 1.0, 0.0, 1);
    image.SetBlankUsed(blank ? 1 : 0);
    image.SetBlank(blank.value_or(0));
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(width) * height;
    const auto read = [&, planeCount = planes](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) { // brings in the pages of a paged image
            for (int plane = 0; plane < planeCount; ++plane) {
                image.GetImageAdr(0, y, plane);
            }
        }
        ReadPart(frame, block.first, block.end - block.first, image.GetImageAdr(0, block.first, 0), stride);
    };
    stars::ForFieldBlocks(image, run, read);
    frames_.Release(frame);
    return image;
}

int LightFrames::AtOnce(const Run& run, int times) const
{
    const FrameSet& lights = frames_.Stored();
    const std::uint64_t light = sizeof(float) * static_cast<std::uint64_t>(Width()) *
                                static_cast<std::uint64_t>(Height()) * static_cast<std::uint64_t>(Planes());
    const std::uint64_t left = MemoryBudget() - std::min(MemoryInUse(), MemoryBudget());
    const std::uint64_t room =
        std::min({left, lights.BandMemory(), light * static_cast<std::uint64_t>(lights.Count())});
    const auto most = static_cast<std::uint64_t>(std::min(run.Threads(), lights.Count()));
    const int atOnce =
        static_cast<int>(std::clamp<std::uint64_t>(room / (static_cast<std::uint64_t>(times) * light), 1, most));
    return 2 * atOnce < run.Threads() ? 1 : atOnce;
}

} // namespace corvane::stack
