#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "stack/calibrate/calibrate.h"
#include "stack/calibrate/cosmetic.h"
#include "stack/calibrate/frame_set.h"

namespace corvane::stack {

/// Frames on disk as they are after calibration.
class CalibratedFrames {
public:
    /// Prepares every frame of the set, which must outlive this. There is one dark scale for each frame.
    CalibratedFrames(FrameSet& frames, Masters masters, double pedestal, const std::vector<double>& darkScales);

    /// The frame's blank value after calibration, if it declares one.
    std::optional<int> Blank(int frame) const { return calibrations_[static_cast<std::size_t>(frame)].blank; }
    /// Tells its blanks.
    BlankTest IsBlank(int frame) const { return Blank(frame) ? BlankTest(*Blank(frame)) : BlankTest(); }

    /// From now on rows are read with these pixels mended after calibration; a dark of the frames' size told them.
    void MendHotPixels(HotPixels pixels) { hotPixels_ = std::move(pixels); }

    /// True when frames are read as their files have them.
    bool AreRaw() const { return masters_.IsEmpty() && pedestal_ == 0.0 && hotPixels_.Count() == 0; }

    const io::FrameInfo& Info(int frame) const { return frames_.Info(frame); }

    /// Reads rows of all planes; plane p begins at samples + p * planeStride. Throws Error.
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);

private:
    void ReadCalibrated(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    void ReadMended(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);

    FrameSet& frames_;
    Masters masters_;
    double pedestal_;
    std::vector<FrameCalibration> calibrations_;
    HotPixels hotPixels_;
    std::vector<float> mended_; ///< rows to mend, with those about them
};

} // namespace corvane::stack
