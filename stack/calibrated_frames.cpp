#include "stack/calibrated_frames.h"

#include <algorithm>
#include <utility>

namespace corvane::stack {

CalibratedFrames::CalibratedFrames(FrameSet& frames, Masters masters, double pedestal,
                                   const std::vector<double>& darkScales)
    : frames_(frames), masters_(std::move(masters))
{
    for (int i = 0; i < frames.Count(); ++i) {
        CImage record;
        frames.Describe(i, record);
        calibrations_.push_back(PrepareFrame(record, masters_, pedestal, darkScales[i]));
    }
}

void CalibratedFrames::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    frames_.Read(frame, firstRow, rowCount, samples, planeStride);
    const io::FrameInfo& info = frames_.Info(frame);
    for (int plane = 0; plane < info.planes; ++plane) {
        CalibrateRows(calibrations_[frame], masters_, plane, firstRow, rowCount, info.width,
                      samples + plane * planeStride);
    }
}

CStlImage CalibratedFrames::ReadImage(int frame, int firstRow, int rowCount)
{
    constexpr int kRowsAtOnce = 64;
    const io::FrameInfo& info = frames_.Info(frame);
    CStlImage image(-32, info.width, rowCount, info.planes, 1.0, 0.0, 1);
    image.SetBlankUsed(Blank(frame) ? 1 : 0);
    image.SetBlank(Blank(frame).value_or(0));
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(kRowsAtOnce) * info.width;
    std::vector<float> samples(static_cast<std::size_t>(stride) * info.planes);
    for (int row = 0; row < rowCount; row += kRowsAtOnce) {
        const int rows = std::min(kRowsAtOnce, rowCount - row);
        Read(frame, firstRow + row, rows, samples.data(), stride);
        for (int i = 0; i < rows * info.planes; ++i) {
            const float* from = samples.data() + i / rows * stride + static_cast<std::ptrdiff_t>(i % rows) * info.width;
            std::copy_n(from, info.width, image.GetImageAdr(0, row + i % rows, i / rows));
        }
    }
    return image;
}

} // namespace corvane::stack
