#include "stack/calibrate/calibrated_frames.h"

#include <algorithm>
#include <utility>

namespace corvane::stack {

namespace {

constexpr int kRowsAtOnce = 64;

} // namespace

CalibratedFrames::CalibratedFrames(FrameSet& frames, Masters masters, double pedestal,
                                   const std::vector<double>& darkScales)
    : frames_(frames), masters_(std::move(masters)), pedestal_(pedestal)
{
    for (int i = 0; i < frames.Count(); ++i) {
        CImage record;
        frames.Describe(i, record);
        calibrations_.push_back(PrepareFrame(record, masters_, pedestal, darkScales[i]));
    }
}

FrameFacts CalibratedFrames::Facts(int frame) const
{
    const io::FrameInfo& info = frames_.Info(frame);
    return {info.width, info.height, info.planes, calibrations_[static_cast<std::size_t>(frame)].blank};
}

void CalibratedFrames::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    if (hotPixels_.Count() == 0) {
        ReadCalibrated(frame, firstRow, rowCount, samples, planeStride);
        return;
    }
    // Rows are mended with the help of those about them: many at once, so that few are read twice.
    for (int row = 0; row < rowCount; row += kRowsAtOnce) {
        const int rows = std::min(kRowsAtOnce, rowCount - row);
        ReadMended(frame, firstRow + row, rows, samples + static_cast<std::ptrdiff_t>(row) * Facts(frame).width,
                   planeStride);
    }
}

void CalibratedFrames::ReadMended(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const FrameFacts info = Facts(frame);
    const int first = std::max(firstRow - hotPixels_.Margin(), 0);
    const int end = std::min(firstRow + rowCount + hotPixels_.Margin(), info.height);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(end - first) * info.width;
    mended_.resize(static_cast<std::size_t>(stride) * info.planes);
    ReadCalibrated(frame, first, end - first, mended_.data(), stride);
    for (int plane = 0; plane < info.planes; ++plane) {
        float* const rows = mended_.data() + plane * stride;
        hotPixels_.Clean({rows, info.width, first, end - first}, firstRow, firstRow + rowCount, plane, info.IsBlank());
        std::copy_n(rows + static_cast<std::ptrdiff_t>(firstRow - first) * info.width,
                    static_cast<std::ptrdiff_t>(rowCount) * info.width, samples + plane * planeStride);
    }
}

void CalibratedFrames::ReadCalibrated(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    frames_.Read(frame, firstRow, rowCount, samples, planeStride);
    const io::FrameInfo& info = frames_.Info(frame);
    for (int plane = 0; plane < info.planes; ++plane) {
        CalibrateRows(calibrations_[frame], masters_, plane, firstRow, rowCount, info.width,
                      samples + plane * planeStride);
    }
}

} // namespace corvane::stack
