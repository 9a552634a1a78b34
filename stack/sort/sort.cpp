#include "stack/sort/sort.h"

#include <algorithm>
#include <map>
#include <utility>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "stack/plan.h"
#include "stack/sort/calibration_choice.h"

namespace corvane::stack {

namespace {

using Frames = std::vector<const FoundFrame*>;

constexpr double kLongBias = 1.0; // a dark frame that is shorter may serve as bias [s]

bool IsDarkLike(FrameKind kind)
{
    return kind == FrameKind::kDark || kind == FrameKind::kFlatDark || kind == FrameKind::kBias;
}

/// True when a header does not speak against what its frame is named for. Darks serve as darks of flats and, when they
/// are short, as bias.
bool MayBe(const HeaderFacts& facts, FrameKind role)
{
    if (!facts.stated || *facts.stated == role) {
        return true;
    }
    const bool isLong = role == FrameKind::kBias && facts.exposure.value_or(0.0) >= kLongBias;
    return IsDarkLike(*facts.stated) && IsDarkLike(role) && !isLong;
}

/// What is known of frames on their way to stacks.
class Night {
public:
    Night(const Options& asked, const std::vector<FoundFrame>& found, SortedNight& night)
        : asked_(asked), night_(night), refusals_(asked.allowMixed, night.warnings)
    {
        for (const FoundFrame& frame : found) {
            hasFolder_ = hasFolder_ || (!frame.role && !frame.isNamed);
        }
        for (const FoundFrame& frame : found) {
            frame.role ? AddNamedFor(frame) : AddByItself(frame);
        }
        TakeOneKindAsLights();
        KeepThoseNamed();
    }

    void MakeStacks();

private:
    void LeaveOut(const FoundFrame& frame, const std::string& reason, bool warns);
    void AddNamedFor(const FoundFrame& frame);
    void AddByItself(const FoundFrame& frame);
    void TakeOneKindAsLights();
    void KeepThoseNamed();
    std::vector<std::pair<std::string, Frames>> LightsByFilter();
    void KeepCommonSize(Frames& lights);
    void CheckAlike(const Frames& lights);
    SortedStack StackOf(const std::string& filter, const Frames& lights, const Sessions& sessions,
                        CalibrationChoice& choice);
    std::string ReferenceAmong(const std::vector<std::string>& lights) const;

    const Options& asked_;
    SortedNight& night_;
    Refusals refusals_;
    bool hasFolder_ = false; ///< of lights
    std::map<FrameKind, Frames> frames_;
};

void Night::LeaveOut(const FoundFrame& frame, const std::string& reason, bool warns)
{
    const auto known = std::find_if(night_.leftOut.begin(), night_.leftOut.end(),
                                    [&](const LeftOut& left) { return left.reason == reason; });
    LeftOut& left = known == night_.leftOut.end() ? night_.leftOut.emplace_back(LeftOut{{}, reason}) : *known;
    left.files.push_back(frame.facts.file);
    if (warns) {
        refusals_.Warn(frame.facts.file + ": left out: " + reason);
    }
}

void Night::AddNamedFor(const FoundFrame& frame)
{
    const FrameKind role = *frame.role;
    if (!MayBe(frame.facts, role)) {
        const std::string stated = std::string("its header calls it a ") + NameOf(*frame.facts.stated);
        if (!frame.isNamed) {
            LeaveOut(frame, stated, false);
            return;
        }
        refusals_.Refuse(frame.facts.file, "is named as a " + std::string(NameOf(role)) + ", but " + stated);
    }
    frames_[role].push_back(&frame);
}

void Night::AddByItself(const FoundFrame& frame)
{
    const bool isLight = frame.facts.kind == FrameKind::kLight;
    if (!frame.facts.kind && !frame.isNamed) {
        LeaveOut(frame, "nothing tells what it is; a file that is named alone is a light", true);
    } else if (isLight && frame.facts.isMaster && !frame.isNamed) {
        LeaveOut(frame, "is a stack", false);
    } else {
        frames_[frame.facts.kind.value_or(FrameKind::kLight)].push_back(&frame);
    }
}

/// Calibration frames are combined as lights are, where they are all that is given.
void Night::TakeOneKindAsLights()
{
    std::string kinds;
    FrameKind only = FrameKind::kLight;
    int count = 0;
    for (const auto& [kind, frames] : frames_) {
        const auto own = std::count_if(frames.begin(), frames.end(), [](const auto* frame) { return !frame->role; });
        if (own > 0) {
            kinds += (kinds.empty() ? "" : ", ") + std::to_string(own) + " of kind " + NameOf(kind);
            only = kind;
            ++count;
        }
    }
    if (frames_.count(FrameKind::kLight) > 0) {
        return;
    }
    if (count != 1 || hasFolder_) {
        throw ParameterError("LIGHT", asked_.lights.front(),
                             "there are no lights" + (kinds.empty() ? "" : ", but frames: " + kinds));
    }
    Frames& from = frames_[only];
    const auto isOwn = [](const FoundFrame* frame) { return !frame->role; };
    std::copy_if(from.begin(), from.end(), std::back_inserter(frames_[FrameKind::kLight]), isOwn);
    from.erase(std::remove_if(from.begin(), from.end(), isOwn), from.end());
}

/// Of a kind that frames are named for, no others count.
void Night::KeepThoseNamed()
{
    for (auto& [kind, frames] : frames_) {
        const auto isOwn = [](const FoundFrame* frame) { return !frame->role; };
        if (std::all_of(frames.begin(), frames.end(), isOwn)) {
            continue;
        }
        for (const FoundFrame* frame : frames) {
            if (isOwn(frame)) {
                LeaveOut(*frame, std::string("others are named as ") + NameOf(kind), false);
            }
        }
        frames.erase(std::remove_if(frames.begin(), frames.end(), isOwn), frames.end());
    }
}

/// The lights of each filter, or all in one, those that do not say among them when there is but one filter.
std::vector<std::pair<std::string, Frames>> Night::LightsByFilter()
{
    std::vector<std::pair<std::string, Frames>> filters;
    Frames silent;
    for (const FoundFrame* light : frames_[FrameKind::kLight]) {
        const std::string& own = light->facts.Of(Fact::kFilter);
        const auto known = std::find_if(filters.begin(), filters.end(),
                                        [&](const auto& filter) { return SameWord(filter.first, own); });
        Frames& lights = own.empty()              ? silent
                         : known == filters.end() ? filters.emplace_back(own, Frames{}).second
                                                  : known->second;
        lights.push_back(light);
    }
    const bool isMixed = filters.size() > 1 && asked_.filter.empty() && !hasFolder_;
    if (isMixed) {
        const HeaderFacts& other = filters[1].second.front()->facts;
        refusals_.Refuse(other.file,
                         "the light has " + DifferenceOf(other, filters[0].second.front()->facts, {Fact::kFilter}) +
                             " as " + filters[0].second.front()->facts.file + "; filter = " + filters[0].first +
                             " chooses, and a folder in place of the files makes one stack of each");
    }
    if (isMixed || filters.size() + (silent.empty() ? 0 : 1) == 1 || (filters.size() == 1 && asked_.filter.empty())) {
        return {{isMixed || filters.empty() ? "" : filters[0].first, frames_[FrameKind::kLight]}};
    }
    if (!silent.empty()) {
        filters.emplace_back("", silent);
    }
    return filters;
}

/// Of lights in folders, those of another size than most are left out.
void Night::KeepCommonSize(Frames& lights)
{
    std::map<std::string, int> counts;
    for (const FoundFrame* light : lights) {
        ++counts[light->facts.Of(Fact::kSize)];
    }
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    const auto isOdd = [&](const FoundFrame* light) {
        return !light->isNamed && light->facts.Of(Fact::kSize) != most->first;
    };
    for (const FoundFrame* light : lights) {
        if (isOdd(light)) {
            LeaveOut(*light, "is " + light->facts.Of(Fact::kSize) + ", most lights are " + most->first, true);
        }
    }
    lights.erase(std::remove_if(lights.begin(), lights.end(), isOdd), lights.end());
}

/// Lights of one stack have one camera, binning and gain. Of their size the plan tells.
void Night::CheckAlike(const Frames& lights)
{
    const HeaderFacts& first = lights.front()->facts;
    for (const FoundFrame* light : lights) {
        const std::string difference = DifferenceOf(light->facts, first, {Fact::kCamera, Fact::kBinning, Fact::kGain});
        if (!difference.empty()) {
            refusals_.Refuse(light->facts.file, "the light has " + difference + " as " + first.file);
            return;
        }
    }
}

/// The light that is asked for as the reference, as it is called among these; empty when it is none of them.
std::string Night::ReferenceAmong(const std::vector<std::string>& lights) const
{
    if (asked_.referenceFile.empty()) {
        return "";
    }
    const std::string key = FileKey(asked_.referenceFile);
    const auto found = std::find_if(lights.begin(), lights.end(), [&](const std::string& light) {
        return light == asked_.referenceFile || FileKey(light) == key;
    });
    return found == lights.end() ? "" : *found;
}

SortedStack Night::StackOf(const std::string& filter, const Frames& lights, const Sessions& sessions,
                           CalibrationChoice& choice)
{
    SortedStack stack{filter, asked_, {}};
    Options& options = stack.options;
    options.lights.clear();
    for (const FoundFrame* frame : lights) {
        const HeaderFacts& light = frame->facts;
        const CalibrationSet set = choice.For(light);
        const auto known = std::find(options.sets.begin(), options.sets.end(), set);
        options.setOfLight.push_back(static_cast<std::size_t>(known - options.sets.begin()));
        if (known == options.sets.end()) {
            options.sets.push_back(set);
        }
        options.lights.push_back(light.file);
        const std::string session = sessions.DateOf(sessions.At(light.time));
        auto group = std::find_if(stack.groups.begin(), stack.groups.end(), [&](const LightGroup& other) {
            return other.frames == set && other.session == session &&
                   other.exposure.has_value() == light.exposure.has_value() &&
                   ExposuresMatch(light.exposure, other.exposure);
        });
        if (group == stack.groups.end()) {
            group = stack.groups.insert(group, {{}, light.exposure, session, set});
        }
        group->lights.push_back(light.file);
    }
    if (options.sets.size() == 1) {
        static_cast<CalibrationSet&>(options) = options.sets.front();
        options.sets.clear();
        options.setOfLight.clear();
    } else {
        static_cast<CalibrationSet&>(options) = {};
    }
    options.referenceFile = ReferenceAmong(options.lights);
    return stack;
}

void Night::MakeStacks()
{
    std::vector<double> times;
    for (const FoundFrame* light : frames_[FrameKind::kLight]) {
        if (light->facts.time) {
            times.push_back(*light->facts.time);
        }
    }
    const Sessions sessions(times);
    std::map<FrameKind, Frames> calibration = frames_;
    CalibrationChoice choice(calibration, sessions, refusals_);
    std::string known;
    for (auto& [filter, lights] : LightsByFilter()) {
        known += (known.empty() ? "" : ", ") + (filter.empty() ? "none" : filter);
        if (!asked_.filter.empty() && !SameWord(filter, asked_.filter)) {
            for (const FoundFrame* light : lights) {
                LeaveOut(*light, "filter " + asked_.filter + " is asked for", false);
            }
            continue;
        }
        KeepCommonSize(lights);
        CheckAlike(lights);
        night_.stacks.push_back(StackOf(filter, lights, sessions, choice));
    }
    if (night_.stacks.empty()) {
        throw ParameterError("filter", asked_.filter, "there are lights of " + known);
    }
    const bool hasReference = std::any_of(night_.stacks.begin(), night_.stacks.end(), [](const SortedStack& stack) {
        return !stack.options.referenceFile.empty();
    });
    if (!asked_.referenceFile.empty() && !hasReference) {
        throw ParameterError("reference", asked_.referenceFile, "it takes one of the lights");
    }
    choice.TellUnused(frames_[FrameKind::kLight].front()->facts, night_);
}

} // namespace

SortedNight SortFrames(const Options& asked, const std::vector<std::string>& skip, const Run& run)
{
    SortedNight night;
    const std::vector<FoundFrame> found = FindFrames(asked, skip, run, night);
    Night(asked, found, night).MakeStacks();
    return night;
}

} // namespace corvane::stack
