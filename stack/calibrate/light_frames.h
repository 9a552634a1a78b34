#pragma once

#include <cstddef>
#include <vector>

#include "corvane/colour/demosaic.h"
#include "corvane/core/run.h"
#include "stack/calibrate/calibrated_frames.h"

namespace corvane::stack {

/// Lights as they are aligned and combined: calibrated, and with colours made of those that are mosaics.
class LightFrames : public FrameSource {
public:
    /// `patterns` are those of the mosaics, one for each light; empty: the lights stay as they are. The frames must
    /// outlive this.
    LightFrames(CalibratedFrames& frames, std::vector<BayerPattern> patterns, DemosaicMethod method);

    int Width() const { return frames_.Facts(0).width; }
    int Height() const { return frames_.Facts(0).height; }
    int Planes() const { return Facts(0).planes; }
    /// True when lights are read as their files have them.
    bool AreRaw() const { return patterns_.empty() && frames_.AreRaw(); }

    FrameFacts Facts(int frame) const override;
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override;
    /// Reads all of a light into an image of its own, which declares the frame's blank. Of the run only its threads
    /// count.
    CStlImage ReadImage(int frame, const Run& run);
    /// How many lights to hold side by side, so many times each, where several threads work on them: no more than take
    /// what combining them takes. 1 where the threads had better share in each.
    int AtOnce(const Run& run, int times = 2) const;

private:
    void ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    void ReadMosaic(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);

    CalibratedFrames& frames_;
    std::vector<BayerPattern> patterns_;
    DemosaicMethod method_;
};

} // namespace corvane::stack
