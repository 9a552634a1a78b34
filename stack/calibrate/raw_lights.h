#pragma once

#include "stack/calibrate/calibrated_frames.h"

namespace corvane::stack {

/// Lights as their files have them: neither calibrated nor in colours that are not in the file.
class RawLights {
public:
    /// The lights must outlive this.
    explicit RawLights(FrameSet& lights);

    /// All of a light, with what its file says of it. Of the run only its threads count. Throws Error.
    CStlImage Read(int light, const Run& run);
    /// The same of samples that were read before as the file has them.
    CStlImage WithRecord(int light, CStlImage samples) const;

private:
    FrameSet& lights_;
    CalibratedFrames uncalibrated_;
};

} // namespace corvane::stack
