#pragma once

#include <optional>
#include <vector>

#include "stack/calibrate.h"
#include "stack/frame_set.h"

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

    /// Reads rows of all planes; plane p begins at samples + p * planeStride. Throws io::Error.
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    /// Reads rows into an image of their own, which declares the frame's blank.
    CStlImage ReadImage(int frame, int firstRow, int rowCount);

private:
    FrameSet& frames_;
    Masters masters_;
    std::vector<FrameCalibration> calibrations_;
};

} // namespace corvane::stack
