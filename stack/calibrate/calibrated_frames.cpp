#include "stack/calibrate/calibrated_frames.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace corvane::stack {

namespace {

constexpr int kRowsAtOnce = 64; // stay in a near cache from reading to the last step

} // namespace

std::size_t CountOf(const LightHits& hits)
{
    return std::accumulate(hits.begin(), hits.end(), std::size_t{0},
                           [](std::size_t sum, const auto& plane) { return sum + plane.size(); });
}

CalibratedFrames::CalibratedFrames(FrameSet& frames, MasterSets masters, double pedestal,
                                   const std::vector<double>& darkScales)
    : frames_(frames), masters_(std::move(masters)), pedestal_(pedestal), hotPixels_(masters_.sets.size())
{
    for (int i = 0; i < frames.Count(); ++i) {
        CImage record;
        frames.Describe(i, record);
        calibrations_.push_back(PrepareFrame(record, masters_.sets[masters_.IndexFor(i)], pedestal, darkScales[i]));
    }
}

bool CalibratedFrames::AreRaw() const
{
    const auto isEmpty = [](const Masters& masters) { return masters.IsEmpty(); };
    const auto hasNone = [](const HotPixels& pixels) { return pixels.Count() == 0; };
    return pedestal_ == 0.0 && cosmicHits_ == nullptr &&
           std::all_of(masters_.sets.begin(), masters_.sets.end(), isEmpty) &&
           std::all_of(hotPixels_.begin(), hotPixels_.end(), hasNone);
}

FrameFacts CalibratedFrames::Facts(int frame) const
{
    const io::FrameInfo& info = frames_.Info(frame);
    return {info.width, info.height, info.planes, calibrations_[static_cast<std::size_t>(frame)].blank};
}

void CalibratedFrames::ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    std::vector<float> buffer;
    for (int row = 0; row < rowCount; row += kRowsAtOnce) {
        const int rows = std::min(kRowsAtOnce, rowCount - row);
        float* const part = samples + static_cast<std::ptrdiff_t>(row) * Facts(frame).width;
        if (HotPixelsOf(frame).Count() == 0) {
            ReadCalibrated(frame, firstRow + row, rows, part, planeStride);
        } else {
            ReadMended(frame, firstRow + row, rows, part, planeStride, buffer);
        }
    }
    if (cosmicHits_ != nullptr) {
        MendHits(frame, firstRow, rowCount, samples, planeStride);
    }
}

/// Mends the samples that cosmic rays have hit, in rows that are otherwise ready.
void CalibratedFrames::MendHits(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const
{
    const std::ptrdiff_t width = frames_.Info(frame).width;
    for (const std::vector<CosmicHit>& hits : (*cosmicHits_)[static_cast<std::size_t>(frame)]) {
        const auto isAbove = [](const CosmicHit& hit, int row) { return hit.y < row; };
        auto hit = std::lower_bound(hits.begin(), hits.end(), firstRow, isAbove);
        for (; hit != hits.end() && hit->y < firstRow + rowCount; ++hit) {
            samples[(hit->y - firstRow) * width + hit->x] = hit->mended;
        }
        samples += planeStride;
    }
}

/// Mends rows with the help of those about them, which are read into the buffer.
void CalibratedFrames::ReadMended(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride,
                                  std::vector<float>& buffer)
{
    const FrameFacts info = Facts(frame);
    const HotPixels& hotPixels = HotPixelsOf(frame);
    const int first = std::max(firstRow - hotPixels.Margin(), 0);
    const int end = std::min(firstRow + rowCount + hotPixels.Margin(), info.height);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(end - first) * info.width;
    buffer.resize(static_cast<std::size_t>(stride) * info.planes);
    ReadCalibrated(frame, first, end - first, buffer.data(), stride);
    for (int plane = 0; plane < info.planes; ++plane) {
        float* const rows = buffer.data() + plane * stride;
        hotPixels.Clean({rows, info.width, first, end - first}, firstRow, firstRow + rowCount, plane, info.IsBlank());
        std::copy_n(rows + static_cast<std::ptrdiff_t>(firstRow - first) * info.width,
                    static_cast<std::ptrdiff_t>(rowCount) * info.width, samples + plane * planeStride);
    }
}

void CalibratedFrames::ReadCalibrated(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    frames_.Read(frame, firstRow, rowCount, samples, planeStride);
    const io::FrameInfo& info = frames_.Info(frame);
    for (int plane = 0; plane < info.planes; ++plane) {
        CalibrateRows(calibrations_[frame], masters_.sets[masters_.IndexFor(frame)], plane, firstRow, rowCount,
                      info.width, samples + plane * planeStride);
    }
}

} // namespace corvane::stack
