#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "corvane/filter/cosmic_rays.h"
#include "stack/calibrate/calibrate.h"
#include "stack/calibrate/cosmetic.h"
#include "stack/calibrate/frame_set.h"
#include "stack/combine/frame_source.h"

namespace corvane::stack {

/// The masters of frames that need not all have the same.
struct MasterSets {
    std::vector<Masters> sets;        ///< one or more
    std::vector<std::size_t> setOf{}; ///< for each frame, its masters; empty: all have the first

    std::size_t IndexFor(int frame) const { return setOf.empty() ? 0 : setOf[static_cast<std::size_t>(frame)]; }
};

/// The samples of a light that cosmic rays have hit, and what they become: of each plane, row by row.
using LightHits = std::vector<std::vector<CosmicHit>>;

/// How many there are in all planes.
std::size_t CountOf(const LightHits& hits);

/// Frames on disk as they are after calibration.
class CalibratedFrames : public FrameSource {
public:
    /// Prepares every frame of the set, which must outlive this. There is one dark scale for each frame.
    CalibratedFrames(FrameSet& frames, MasterSets masters, double pedestal, const std::vector<double>& darkScales);

    /// From now on rows are read with these pixels mended after calibration, which the darks of each set of masters
    /// told.
    void MendHotPixels(std::vector<HotPixels> pixels) { hotPixels_ = std::move(pixels); }

    /// From now on these samples of each frame are read as mended, after hot pixels. They must outlive this, and may
    /// change while their frame is not read.
    void MendCosmicHits(const std::vector<LightHits>& hits) { cosmicHits_ = &hits; }

    /// True when frames are read as their files have them.
    bool AreRaw() const;

    const FrameSet& Stored() const { return frames_; } ///< As they are in their files.

    /// The blank value is the one after calibration.
    FrameFacts Facts(int frame) const override;
    void Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override
    {
        ReadPart(frame, firstRow, rowCount, samples, planeStride);
        frames_.Release(frame);
    }
    /// Reads rows of a frame of which more are read at once; `Release` says that there are no more.
    void ReadPart(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    void Release(int frame) { frames_.Release(frame); }

private:
    void ReadCalibrated(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride);
    void ReadMended(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride,
                    std::vector<float>& buffer);
    void MendHits(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const;

    const HotPixels& HotPixelsOf(int frame) const { return hotPixels_[masters_.IndexFor(frame)]; }

    FrameSet& frames_;
    MasterSets masters_;
    double pedestal_;
    std::vector<FrameCalibration> calibrations_;
    std::vector<HotPixels> hotPixels_;                   ///< of each set of masters
    const std::vector<LightHits>* cosmicHits_ = nullptr; ///< of each frame; null: they stay
};

} // namespace corvane::stack
