#pragma once

#include <optional>
#include <vector>

#include "stack/calibrate/calibrated_frames.h"
#include "stack/calibrate/light_frames.h"
#include "stack/combine/combine.h"
#include "stack/follow.h"
#include "stack/plan.h"
#include "stack/register/measure_lights.h"
#include "stack/stack.h"
#include "stack/stopwatch.h"

namespace corvane::stack {

/// The lights of a job on their way to the stack: checked, with the masters they are calibrated by, measured, and
/// placed on one of them.
class PreparedLights {
public:
    /// Checks everything that can be judged before the work, makes the masters, and prepares the lights to be read.
    /// Throws Error and Cancelled.
    PreparedLights(const Options& options, Registration& result, Stopwatch& stopwatch, const Run& run);

    /// Measures the lights, chooses the reference, leaves out what the options or the alignment leave out, and says in
    /// the reports how the others are placed.
    void Register();
    /// How each of the lights that are used is combined, after `Register`: on the stars, or on what the options follow.
    std::vector<Placement> Placements(bool followsMotion) const;

    /// How deep the finished stack of these lights is; unset where that was not asked for, or the stack is of another kind.
    std::optional<Depth> DepthOf(const CStlImage& stack) const;

    const Plan& GetPlan() const { return plan_; }
    LightFrames& Frames() { return *frames_; }

private:
    void AddNote(const std::string& text);
    void NoteFlatGaps(const std::vector<Masters>& sets);
    void MendHotPixels(const std::vector<Masters>& sets);
    void MendCosmicHits();
    void NoteCosmicHits(const std::vector<LightHits>& mended);
    std::vector<Normalisation> NormalisationsOf(std::size_t light) const;
    Mapping MappingOf(std::size_t light, bool followsMotion) const;
    void AddFields(Placement& placement, const Mapping& reference) const;
    double NoiseOf(std::size_t light, std::size_t plane) const;
    void SetWeights();
    void TakeThumbnails();
    void AlignByTheirStars();
    void FollowTheirMotion();

    const Options& options_;
    Registration& result_;
    Stopwatch& stopwatch_;
    const Run& run_;
    Plan plan_;
    std::optional<CalibratedFrames> calibrated_;
    std::optional<LightFrames> frames_;
    std::vector<SeenLight> seen_;
    Motion motion_; ///< of what the options follow
};

/// The places of the lights that are used.
std::vector<int> UsedFrames(const std::vector<FrameReport>& frames);

} // namespace corvane::stack
