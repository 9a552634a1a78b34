#pragma once

#include <optional>
#include <string>
#include <vector>

#include "stack/sort/find_frames.h"
#include "stack/sort/sessions.h"

namespace corvane::stack {

/// Calibration frames of one kind that make one master.
struct FrameGroup {
    HeaderFacts common; ///< what any of them says
    std::vector<const FoundFrame*> frames;
    std::optional<int> session; ///< of flats: the session of lights next in time
    bool hasOneExposure = true;
    bool isUsed = false;

    bool IsDemanded() const { return frames.front()->IsDemanded(); }
    std::vector<std::string> Files() const;
};

/// Puts frames of a kind together that are alike. Files that are named stay together unless their camera, size,
/// binning, gain, filter or the like differ; of folders, so do darks within 2 K, and flats next to one session of
/// lights.
std::vector<FrameGroup> GroupFrames(const std::vector<const FoundFrame*>& frames, FrameKind kind,
                                    const Sessions& sessions);

/// How a group suits a light, or flats.
struct Fit {
    std::string fault;          ///< in what it does not, as "gain 200, not 100"; empty if it does
    std::array<double, 5> cost; ///< the less, the better; the first counts most
};

/// @name How well calibration frames suit a light
/// @{
Fit FitOfBias(const FrameGroup& bias, const HeaderFacts& light);
Fit FitOfDark(const FrameGroup& dark, const HeaderFacts& light, bool hasBias);
Fit FitOfFlat(const FrameGroup& flat, const HeaderFacts& light, const Sessions& sessions);
/// @}

/// How well darks suit flats: by the exposure that both state.
Fit FitOfFlatDark(const FrameGroup& dark, const FrameGroup& flat);

} // namespace corvane::stack
