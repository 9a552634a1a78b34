#include "stack/sort/frame_groups.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/text.h"
#include "stack/calibrate/dark_current.h"
#include "stack/plan.h"

namespace corvane::stack {

namespace {

/// How many of these facts one of the two does not state.
double UnknownOf(const HeaderFacts& a, const HeaderFacts& b, std::initializer_list<Fact> facts)
{
    return static_cast<double>(
        std::count_if(facts.begin(), facts.end(), [&](Fact fact) { return a.Of(fact).empty() || b.Of(fact).empty(); }));
}

double Distance(const std::optional<double>& a, const std::optional<double>& b, double unknown)
{
    return a && b ? std::fabs(*a - *b) : unknown;
}

std::initializer_list<Fact> FactsOfKind(FrameKind kind)
{
    return kind == FrameKind::kFlat ? kFactsOfFlat : kFactsOfDark;
}

bool HasExposure(FrameKind kind)
{
    return kind == FrameKind::kDark || kind == FrameKind::kFlatDark;
}

bool Belongs(const FoundFrame& frame, const std::optional<int>& session, FrameKind kind, const FrameGroup& group)
{
    const HeaderFacts& facts = frame.facts;
    const bool isAlike = DifferenceOf(facts, group.common, FactsOfKind(kind)).empty() &&
                         (!HasExposure(kind) || ExposuresMatch(facts.exposure, group.common.exposure));
    if (frame.IsDemanded() || !isAlike) { // of a kind all are demanded or none
        return isAlike;
    }
    const bool isAsWarm = std::any_of(group.frames.begin(), group.frames.end(), [&](const FoundFrame* other) {
        return TemperaturesMatch(facts.temperature, other->facts.temperature);
    });
    return facts.isMaster == group.common.isMaster && facts.HasLostBias() == group.common.HasLostBias() &&
           (kind != FrameKind::kDark || isAsWarm) && (kind != FrameKind::kFlat || session == group.session);
}

/// Adds what a frame says to what is known of its group.
void Join(const FoundFrame& frame, FrameGroup& group)
{
    const HeaderFacts& facts = frame.facts;
    group.hasOneExposure = group.hasOneExposure && ExposuresMatch(facts.exposure, group.common.exposure);
    for (std::size_t i = 0; i < facts.facts.size(); ++i) {
        std::string& known = group.common.facts[i];
        known = known.empty() ? facts.facts[i] : known;
    }
    const auto keep = [](auto& known, const auto& stated) { known = known ? known : stated; };
    keep(group.common.exposure, facts.exposure);
    keep(group.common.temperature, facts.temperature);
    keep(group.common.time, facts.time);
    if (!facts.HasLostBias()) {
        group.common.calibration = facts.calibration;
    }
    group.frames.push_back(&frame);
}

} // namespace

std::vector<std::string> FrameGroup::Files() const
{
    std::vector<std::string> files;
    std::transform(frames.begin(), frames.end(), std::back_inserter(files),
                   [](const FoundFrame* frame) { return frame->facts.file; });
    return files;
}

std::vector<FrameGroup> GroupFrames(const std::vector<const FoundFrame*>& frames, FrameKind kind,
                                    const Sessions& sessions)
{
    std::vector<FrameGroup> groups;
    for (const FoundFrame* frame : frames) {
        const std::optional<int> session = frame->IsDemanded() ? std::nullopt : sessions.At(frame->facts.time);
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const FrameGroup& known) { return Belongs(*frame, session, kind, known); });
        if (group == groups.end()) {
            group = groups.insert(groups.end(), FrameGroup{.common = frame->facts, .frames = {}, .session = session});
        }
        Join(*frame, *group);
    }
    return groups;
}

Fit FitOfBias(const FrameGroup& bias, const HeaderFacts& light)
{
    return {DifferenceOf(bias.common, light, kFactsOfDark),
            {UnknownOf(bias.common, light, kFactsOfDark), bias.common.isMaster ? 1.0 : 0.0,
             Distance(bias.common.time, light.time, 0.0)}};
}

Fit FitOfDark(const FrameGroup& dark, const HeaderFacts& light, bool hasBias)
{
    const HeaderFacts& facts = dark.common;
    Fit fit{DifferenceOf(facts, light, kFactsOfDark), {}};
    const bool isScaled = !ExposuresMatch(light.exposure, facts.exposure);
    if (fit.fault.empty() && isScaled && !hasBias && !dark.IsDemanded()) { // of named ones the check of exposures tells
        fit.fault = "exposure " + NumberText(*facts.exposure) + " s, not " + NumberText(*light.exposure) +
                    " s, and no bias to scale it";
    }
    const double ratio = isScaled ? std::fabs(std::log(*light.exposure / *facts.exposure)) : 0.0;
    fit.cost = {isScaled ? 1.0 : 0.0, ratio, Distance(facts.temperature, light.temperature, kTemperatureTolerance),
                UnknownOf(facts, light, kFactsOfDark), facts.isMaster ? 1.0 : 0.0};
    return fit;
}

Fit FitOfFlat(const FrameGroup& flat, const HeaderFacts& light, const Sessions& sessions)
{
    return {DifferenceOf(flat.common, light, kFactsOfFlat),
            {sessions.Between(flat.session, sessions.At(light.time)), UnknownOf(flat.common, light, kFactsOfFlat),
             flat.common.isMaster ? 1.0 : 0.0}};
}

Fit FitOfFlatDark(const FrameGroup& dark, const FrameGroup& flat)
{
    const std::optional<double>& own = dark.common.exposure;
    const std::optional<double>& theirs = flat.common.exposure;
    Fit fit{DifferenceOf(dark.common, flat.common, kFactsOfDark),
            {Distance(own, theirs, 0.0), dark.common.isMaster ? 1.0 : 0.0,
             dark.common.kind == FrameKind::kFlatDark ? 0.0 : 1.0,
             Distance(dark.common.temperature, flat.common.temperature, 0.0)}};
    const bool isExposed = own && theirs && flat.hasOneExposure && ExposuresMatch(own, theirs);
    if (fit.fault.empty() && !isExposed && !dark.IsDemanded()) {
        fit.fault = "another exposure than the flats, or one that is not known";
    }
    return fit;
}

} // namespace corvane::stack
