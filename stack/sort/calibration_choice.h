#pragma once

#include <map>
#include <string>
#include <vector>

#include "stack/sort/frame_groups.h"

namespace corvane::stack {

/// Refuses frames that do not go together, or warns of them where that is asked for.
class Refusals {
public:
    Refusals(bool mayMix, std::vector<std::string>& warnings) : mayMix_(mayMix), warnings_(warnings) {}

    bool MayMix() const { return mayMix_; }
    /// Throws Error about a file unless frames may be mixed.
    void Refuse(const std::string& file, const std::string& reason);
    /// Keeps a warning, each once.
    void Warn(const std::string& text);

private:
    bool mayMix_;
    std::vector<std::string>& warnings_;
};

/// All calibration frames of a night, from which each light gets those that suit it.
class CalibrationChoice {
public:
    /// `frames` are those of each kind; they and the others must outlive this.
    CalibrationChoice(const std::map<FrameKind, std::vector<const FoundFrame*>>& frames, const Sessions& sessions,
                      Refusals& refusals);

    /// The frames for a light. Throws Error where those that are named do not suit it.
    CalibrationSet For(const HeaderFacts& light);

    /// What no light got, with what sets it apart from such a light.
    void TellUnused(const HeaderFacts& light, SortedNight& night);

private:
    bool IsSpared(FrameKind kind, const HeaderFacts& light);
    template <class Measure>
    FrameGroup* Choose(FrameKind kind, const HeaderFacts& light, const Measure& fitOf);
    FrameGroup* Settle(FrameKind kind, const HeaderFacts& light, FrameGroup& group, const std::string& fault);
    void SetFlats(const HeaderFacts& light, const FrameGroup* bias, CalibrationSet& set);
    FrameGroup* DarkOfFlats(const FrameGroup& flats);
    std::string FaultOf(FrameKind kind, const FrameGroup& group, const HeaderFacts& light) const;

    std::map<FrameKind, std::vector<FrameGroup>> groups_;
    const Sessions& sessions_;
    Refusals& refusals_;
};

/// "flat_001.fits", or "flat_001.fits and 9 more".
std::string ShortList(const std::vector<std::string>& files);

} // namespace corvane::stack
