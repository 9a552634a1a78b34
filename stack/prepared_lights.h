#pragma once

#include <optional>
#include <vector>

#include "stack/calibrate/calibrated_frames.h"
#include "stack/calibrate/light_frames.h"
#include "stack/calibrate/raw_lights.h"
#include "stack/combine/combine.h"
#include "stack/follow.h"
#include "stack/plan.h"
#include "stack/register/measure_lights.h"
#include "stack/stack.h"
#include "stack/stopwatch.h"

namespace corvane::stack {

/// What is known of a light, measured and, in its report, placed.
struct LightRecord {
    FrameReport report;
    SeenLight seen;
    LightHits hits; ///< what cosmic rays have hit and is mended
};

/// The lights of a job on their way to the stack: checked, with the masters they are calibrated by, measured, and
/// placed on one of them.
class PreparedLights {
public:
    /// Checks everything that can be judged before the work. Throws Error and Cancelled.
    PreparedLights(const Options& options, Registration& result, Stopwatch& stopwatch, const Run& run);
    PreparedLights(const PreparedLights&) = delete;
    PreparedLights& operator=(const PreparedLights&) = delete;

    /// Makes the masters, and prepares the lights to be read; once.
    void Calibrate();
    /// Measures some of the lights, after `Calibrate`.
    void Measure(const std::vector<int>& lights);
    /// What is known of a light.
    LightRecord RecordOf(int light) const;
    /// Takes over what another process knows of a light.
    void Take(int light, LightRecord record);

    /// Chooses the reference, leaves out what the options or the alignment leave out, and says in the reports how the
    /// others are placed. All lights have been measured or taken over, after `Calibrate`.
    void Place();
    /// Measures all lights and places them.
    void Register();
    /// Takes over how lights were placed in another process, and what was told of them; those records were taken
    /// before.
    void TakePlaces(int referenceLight, const std::optional<PixelPlace>& reference, std::vector<std::string> notes);
    /// How each of the lights that are used is combined, after `Register`: on the stars, or on what the options follow.
    std::vector<Placement> Placements(bool followsMotion) const;

    /// How deep the finished stack of these lights is; unset where that was not asked for, or the stack is of another
    /// kind.
    std::optional<Depth> DepthOf(const CStlImage& stack) const;

    const Plan& GetPlan() const { return plan_; }
    LightFrames& Frames() { return *frames_; }

private:
    void AddNote(const std::string& text);
    void NoteFlatGaps(const std::vector<Masters>& sets);
    void MendHotPixels(const std::vector<Masters>& sets);
    void FindHits(const std::vector<int>& lights);
    void NoteHits();
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
    std::optional<RawLights> raw_;
    std::vector<SeenLight> seen_; ///< of each light
    std::vector<LightHits> hits_; ///< of each light
    Motion motion_;               ///< of what the options follow
};

/// The places of the lights that are used.
std::vector<int> UsedFrames(const std::vector<FrameReport>& frames);

} // namespace corvane::stack
