#include "stack/sort/calibration_choice.h"

#include <algorithm>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/text.h"

namespace corvane::stack {

namespace {

/// What a light is called by that shares its lack with others: "the lights of Ha with 60 s".
std::string LightsLike(const HeaderFacts& light)
{
    const std::string& filter = light.Of(Fact::kFilter);
    return "the lights" + (filter.empty() ? "" : " of " + filter) +
           (light.exposure ? " with " + NumberText(*light.exposure) + " s" : "");
}

/// True for a light whose header says that it went through frames of a kind before.
bool IsDone(FrameKind kind, const HeaderFacts& light)
{
    return kind == FrameKind::kFlat ? light.HasLostVignetting() : light.HasLostBias();
}

std::vector<std::string> UseOf(FrameGroup* group)
{
    if (group == nullptr) {
        return {};
    }
    group->isUsed = true;
    return group->Files();
}

} // namespace

void Refusals::Refuse(const std::string& file, const std::string& reason)
{
    if (!mayMix_) {
        throw FileError(file, reason + "; allow-mixed = yes takes it all the same");
    }
    Warn(file + ": " + reason);
}

void Refusals::Warn(const std::string& text)
{
    if (std::find(warnings_.begin(), warnings_.end(), text) == warnings_.end()) {
        warnings_.push_back(text);
    }
}

CalibrationChoice::CalibrationChoice(const std::map<FrameKind, std::vector<const FoundFrame*>>& frames,
                                     const Sessions& sessions, Refusals& refusals)
    : sessions_(sessions), refusals_(refusals)
{
    for (const FrameKind kind : {FrameKind::kBias, FrameKind::kDark, FrameKind::kFlat, FrameKind::kFlatDark}) {
        const auto found = frames.find(kind);
        groups_[kind] = found == frames.end() ? std::vector<FrameGroup>() : GroupFrames(found->second, kind, sessions);
    }
}

CalibrationSet CalibrationChoice::For(const HeaderFacts& light)
{
    CalibrationSet set;
    FrameGroup* const bias =
        Choose(FrameKind::kBias, light, [&](const FrameGroup& group) { return FitOfBias(group, light); });
    set.bias = UseOf(bias);
    set.darks = UseOf(Choose(FrameKind::kDark, light,
                             [&](const FrameGroup& group) { return FitOfDark(group, light, bias != nullptr); }));
    SetFlats(light, bias, set);
    return set;
}

/// Whether a light goes without frames of a kind because it went through such before; named ones are refused then.
bool CalibrationChoice::IsSpared(FrameKind kind, const HeaderFacts& light)
{
    if (groups_[kind].empty() || !IsDone(kind, light)) {
        return false;
    }
    if (groups_[kind].front().IsDemanded() || refusals_.MayMix()) { // of a kind all are demanded or none
        refusals_.Refuse(light.file,
                         "went through a " + std::string(NameOf(kind)) + " before: CALSTAT = " + light.calibration);
        return false;
    }
    refusals_.Warn(LightsLike(light) + " go without " + NameOf(kind) + ": CALSTAT = " + light.calibration);
    return true;
}

/// The group that suits best; where none does, `Settle` has the word.
template <class Measure>
FrameGroup* CalibrationChoice::Choose(FrameKind kind, const HeaderFacts& light, const Measure& fitOf)
{
    if (IsSpared(kind, light)) {
        return nullptr;
    }
    FrameGroup* best = nullptr;
    Fit bestFit;
    for (FrameGroup& group : groups_[kind]) {
        Fit fit = fitOf(group);
        const auto rank = [](const Fit& of) { return std::pair(!of.fault.empty(), of.cost); };
        if (best == nullptr || rank(fit) < rank(bestFit)) {
            best = &group;
            bestFit = std::move(fit);
        }
    }
    return best == nullptr || bestFit.fault.empty() ? best : Settle(kind, light, *best, bestFit.fault);
}

/// What becomes of the nearest group that does not suit: named ones are refused, others not taken, unless both may be.
FrameGroup* CalibrationChoice::Settle(FrameKind kind, const HeaderFacts& light, FrameGroup& group,
                                      const std::string& fault)
{
    if (group.IsDemanded() || refusals_.MayMix()) {
        refusals_.Refuse(group.common.file,
                         "the " + std::string(NameOf(kind)) + " has " + fault + " as the light " + light.file);
        return &group;
    }
    refusals_.Warn(LightsLike(light) + " go without " + NameOf(kind) + ": " + ShortList(group.Files()) + ": " + fault);
    return nullptr;
}

void CalibrationChoice::SetFlats(const HeaderFacts& light, const FrameGroup* bias, CalibrationSet& set)
{
    FrameGroup* const flats =
        Choose(FrameKind::kFlat, light, [&](const FrameGroup& group) { return FitOfFlat(group, light, sessions_); });
    set.flats = UseOf(flats);
    if (flats == nullptr) {
        return;
    }
    set.flatsAreCalibrated = flats->common.HasLostBias();
    if (set.flatsAreCalibrated) {
        return;
    }
    FrameGroup* const dark = DarkOfFlats(*flats);
    set.flatDarks = UseOf(dark);
    const std::string fault = bias == nullptr ? "" : FitOfBias(*bias, flats->common).fault;
    if (dark != nullptr || (bias != nullptr && fault.empty())) {
        return;
    }
    for (FrameGroup& other : groups_[FrameKind::kBias]) {
        if (FitOfBias(other, flats->common).fault.empty()) {
            set.flatDarks = UseOf(&other);
            return;
        }
    }
    if (bias == nullptr) {
        return;
    }
    if (bias->IsDemanded() || refusals_.MayMix()) {
        refusals_.Refuse(bias->common.file, "the bias has " + fault + " as the flat " + flats->common.file);
    } else {
        refusals_.Warn(ShortList(flats->Files()) + ": no bias is taken off: " + bias->common.file + ": " + fault);
        set.flatsAreCalibrated = true;
    }
}

/// The flat-darks, or darks that are not named as such, that suit flats best; null for none.
FrameGroup* CalibrationChoice::DarkOfFlats(const FrameGroup& flats)
{
    FrameGroup* best = nullptr;
    Fit bestFit;
    for (const FrameKind kind : {FrameKind::kFlatDark, FrameKind::kDark}) {
        for (FrameGroup& group : groups_[kind]) {
            Fit fit = FitOfFlatDark(group, flats);
            if (kind == FrameKind::kFlatDark && group.IsDemanded()) {
                if (!fit.fault.empty()) {
                    refusals_.Refuse(group.common.file,
                                     "the flat-dark has " + fit.fault + " as the flat " + flats.common.file);
                }
                return &group;
            }
            if (fit.fault.empty() && !group.IsDemanded() && (best == nullptr || fit.cost < bestFit.cost)) {
                best = &group;
                bestFit = std::move(fit);
            }
        }
    }
    return best;
}

std::string CalibrationChoice::FaultOf(FrameKind kind, const FrameGroup& group, const HeaderFacts& light) const
{
    if (kind != FrameKind::kFlatDark && IsDone(kind, light)) {
        return "the lights went through such before";
    }
    switch (kind) {
    case FrameKind::kFlat:
        return FitOfFlat(group, light, sessions_).fault;
    case FrameKind::kDark:
        return FitOfDark(group, light, false).fault;
    case FrameKind::kFlatDark:
        return "no flats of its exposure";
    default:
        return FitOfBias(group, light).fault;
    }
}

void CalibrationChoice::TellUnused(const HeaderFacts& light, SortedNight& night)
{
    for (const auto& [kind, groups] : groups_) {
        for (const FrameGroup& group : groups) {
            if (group.isUsed) {
                continue;
            }
            const std::string fault = FaultOf(kind, group, light);
            const std::string reason = fault.empty() ? "others suit the lights better" : fault;
            night.leftOut.push_back({group.Files(), reason});
            if (group.IsDemanded()) {
                refusals_.Warn(ShortList(group.Files()) + ": left out: " + reason);
            }
        }
    }
}

std::string ShortList(const std::vector<std::string>& files)
{
    const std::size_t more = files.size() - 1;
    return files.front() + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

} // namespace corvane::stack
