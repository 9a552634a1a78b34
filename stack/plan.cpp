#include "stack/plan.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/bayer.h"
#include "io/metadata.h"
#include "stack/calibrate/dark_current.h"
#include "stack/row_order.h"

namespace corvane::stack {

namespace {

std::string SizeText(const io::FrameReader& frame)
{
    const std::string planes = frame.Planes() == 1 ? " (1 plane)" : " (" + std::to_string(frame.Planes()) + " planes)";
    return std::to_string(frame.Width()) + " x " + std::to_string(frame.Height()) + planes;
}

bool SameSize(const io::FrameReader& a, const io::FrameReader& b)
{
    return a.Width() == b.Width() && a.Height() == b.Height();
}

/// Checks a set of frames against the one that they are for, which they may serve with one plane.
void CheckFit(const FrameSet& frames, const char* kind, const io::FrameReader& other, const char* otherKind)
{
    for (int i = 0; i < frames.Count(); ++i) {
        const io::FrameReader& frame = frames.Reader(i);
        const bool fits = frame.Planes() == 1 || frame.Planes() == other.Planes();
        if (!SameSize(frame, other) || !fits) {
            throw FileError(frame.Path(), "the " + std::string(kind) + " is " + SizeText(frame) + ", but the " +
                                              otherKind + " " + other.Path() + " is " + SizeText(other));
        }
        if (frame.Planes() != frames.Reader(0).Planes()) {
            throw FileError(frame.Path(), "the " + std::string(kind) + " is " + SizeText(frame) + ", but " +
                                              frames.Path(0) + " is " + SizeText(frames.Reader(0)));
        }
    }
}

void CheckLights(const FrameSet& lights)
{
    const io::FrameReader& first = lights.Reader(0);
    for (int i = 1; i < lights.Count(); ++i) {
        const io::FrameReader& light = lights.Reader(i);
        if (!SameSize(light, first) || light.Planes() != first.Planes()) {
            throw FileError(light.Path(), "the light is " + SizeText(light) + ", but the first light " + first.Path() +
                                              " is " + SizeText(first));
        }
    }
}

void CheckSizes(const Plan& plan)
{
    CheckLights(plan.lights);
    const io::FrameReader& light = plan.lights.Reader(0);
    for (const CalibrationFrames& set : plan.sets) {
        CheckFit(*set.bias, "bias", light, "light");
        CheckFit(*set.darks, "dark", light, "light");
        CheckFit(*set.flats, "flat", light, "light");
        if (!set.flats->IsEmpty()) {
            const bool hasOwnDark = !set.flatDarks->IsEmpty();
            CheckFit(hasOwnDark ? *set.flatDarks : *set.bias, hasOwnDark ? "flat-dark" : "bias", set.flats->Reader(0),
                     "flat");
        }
    }
}

bool AreClose(double a, double b)
{
    return std::fabs(a - b) <= std::max(0.05, 0.005 * std::max(a, b));
}

/// Refuses an exposure that is stated, but not as a number: a dark can neither be compared nor scaled by it.
void CheckReadable(const FrameSet& frames)
{
    for (int i = 0; i < frames.Count(); ++i) {
        if (const auto stated = io::UnreadableExposure(frames.Info(i).header)) {
            throw FileError(frames.Path(i), "its exposure, " + *stated + ", is no number of seconds");
        }
    }
}

/// The one exposure of the darks; unknown when none of them says it.
std::optional<double> DarkExposure(const FrameSet& darks)
{
    std::optional<double> common;
    int from = 0;
    for (int i = 0; i < darks.Count(); ++i) {
        const auto exposure = io::ExposureSeconds(darks.Info(i).header);
        if (exposure && common && !AreClose(*exposure, *common)) {
            throw FileError(darks.Path(i), "the dark has " + NumberText(*exposure) + " s, but the dark " +
                                               darks.Path(from) + " has " + NumberText(*common) + " s");
        }
        if (exposure && !common) {
            common = exposure;
            from = i;
        }
    }
    return common;
}

std::optional<double> MeanTemperature(const FrameSet& frames)
{
    double sum = 0.0;
    int count = 0;
    for (int i = 0; i < frames.Count(); ++i) {
        if (const auto temperature = io::CcdTemperature(frames.Info(i).header)) {
            sum += *temperature;
            ++count;
        }
    }
    return count > 0 ? std::optional(sum / count) : std::nullopt;
}

/// Checks that a dark suits a light, or can be scaled to it.
void CheckExposure(const Plan& plan, int light)
{
    const CalibrationFrames& set = plan.SetOf(light);
    const std::optional<double>& exposure = plan.exposures[static_cast<std::size_t>(light)];
    if (ExposuresMatch(exposure, set.darkExposure)) {
        return;
    }
    const std::string difference =
        "the light has " + NumberText(*exposure) + " s, but the darks have " + NumberText(*set.darkExposure) + " s";
    if (set.bias->IsEmpty()) {
        throw FileError(plan.lights.Path(light),
                        difference + ": add bias frames to scale them, or darks of its exposure");
    }
    if (!(*set.darkExposure > 0.0)) {
        throw FileError(plan.lights.Path(light), difference + ", which cannot be scaled");
    }
}

void CheckExposures(Plan& plan)
{
    const auto hasDarks = [](const CalibrationFrames& set) { return !set.darks->IsEmpty(); };
    if (std::any_of(plan.sets.begin(), plan.sets.end(), hasDarks)) {
        CheckReadable(plan.lights);
    }
    for (CalibrationFrames& set : plan.sets) {
        CheckReadable(*set.darks);
        set.darkExposure = DarkExposure(*set.darks);
        set.darkTemperature = MeanTemperature(*set.darks);
    }
    for (int i = 0; i < plan.lights.Count(); ++i) {
        CheckExposure(plan, i);
    }
}

/// By what the dark of a light is multiplied. It takes bias frames, which do not grow with exposure or temperature.
void FindDarkScales(Plan& plan)
{
    std::vector<int> warm(plan.sets.size());
    for (int i = 0; i < plan.lights.Count(); ++i) {
        const CalibrationFrames& set = plan.SetOf(i);
        const std::optional<double>& exposure = plan.exposures[static_cast<std::size_t>(i)];
        double scale = ExposuresMatch(exposure, set.darkExposure) ? 1.0 : *exposure / *set.darkExposure;
        const auto temperature = io::CcdTemperature(plan.lights.Info(i).header);
        if (!TemperaturesMatch(temperature, set.darkTemperature)) {
            scale *= set.bias->IsEmpty() ? 1.0 : DarkCurrentRatio(*temperature, *set.darkTemperature);
            ++warm[plan.setOf[static_cast<std::size_t>(i)]];
        }
        plan.darkScales.push_back(scale);
    }
    for (std::size_t s = 0; s < warm.size(); ++s) {
        const CalibrationFrames& set = plan.sets[s];
        if (warm[s] > 0) {
            plan.notes.push_back("the darks have " + NumberText(*set.darkTemperature, 1) + " C, " +
                                 std::to_string(warm[s]) + " of their lights differ by more than 2 K; " +
                                 (set.bias->IsEmpty() ? "bias frames would let them be scaled"
                                                      : "they are scaled by what dark current does on the average"));
        }
    }
}

void NoteUnknownExposures(Plan& plan)
{
    for (std::size_t s = 0; s < plan.sets.size(); ++s) {
        if (plan.sets[s].darks->IsEmpty()) {
            continue;
        }
        if (!plan.sets[s].darkExposure) {
            plan.notes.emplace_back("the exposure of the darks is not known; they were taken as matching the lights");
            continue;
        }
        int unknown = 0;
        for (std::size_t i = 0; i < plan.exposures.size(); ++i) {
            unknown += plan.setOf[i] == s && !plan.exposures[i] ? 1 : 0;
        }
        if (unknown > 0) {
            plan.notes.push_back("the exposure of " + std::to_string(unknown) + " of " +
                                 std::to_string(std::count(plan.setOf.begin(), plan.setOf.end(), s)) +
                                 " lights is not known; the darks were taken as matching them");
        }
    }
}

/// The pattern of a light. A light that does not say has that of the first.
BayerPattern PatternOf(const io::FrameReader& light, const io::FrameReader& first)
{
    const auto own = io::StoredBayerPattern(light.Info().header, light.Height());
    const auto named = own ? own : io::StoredBayerPattern(first.Info().header, first.Height());
    return NamedBayerPattern(named.value_or("")).value_or(BayerPattern::kRggb);
}

/// Finds out whether the lights are mosaics, and of which patterns colours are made. Moving a mosaic mixes its colours,
/// so lights that stay mosaics are not aligned.
void FindPatterns(const Options& options, Plan& plan)
{
    const io::FrameReader& first = plan.lights.Reader(0);
    const auto stated = io::BayerPattern(first.Info().header);
    plan.isMosaic = plan.planes == 1 && (stated || options.mosaic == MosaicUse::kPattern);
    const bool moves = options.align != AlignMethod::kNone;
    if (options.mosaic == MosaicUse::kPattern && plan.planes != 1) {
        throw FileError(first.Path(), "the light is " + SizeText(first) + "; bayer takes lights of one plane");
    }
    if (!plan.isMosaic || (options.mosaic == MosaicUse::kAuto && !moves)) {
        return;
    }
    if (options.mosaic == MosaicUse::kKeep) {
        if (moves) {
            throw FileError(first.Path(),
                            "is a mosaic, which bayer = none keeps; stack with align = none, since moving it "
                            "mixes its colours");
        }
        return;
    }
    if (options.mosaic == MosaicUse::kAuto && !io::StoredBayerPattern(first.Info().header, first.Height())) {
        throw FileError(first.Path(), "its mosaic " + *stated +
                                          " is no Bayer pattern, so no colours can be made to move it; "
                                          "stack with align = none");
    }
    for (int i = 0; i < plan.lights.Count(); ++i) {
        plan.patterns.push_back(options.mosaic == MosaicUse::kPattern ? options.pattern
                                                                      : PatternOf(plan.lights.Reader(i), first));
    }
}

/// A pattern that stands where only filters do is not gone by, but not passed over either.
void NoteHintedPattern(const Options& options, Plan& plan)
{
    const auto hinted = io::HintedBayerPattern(plan.lights.Info(0).header);
    if (hinted && plan.planes == 1 && options.mosaic == MosaicUse::kAuto) {
        plan.notes.push_back("FILTER = " + *hinted +
                             " names a Bayer pattern, but the lights have no BAYERPAT and were "
                             "taken as monochrome; bayer = " +
                             *hinted + " makes colours");
    }
}

using FilesOfKind = std::vector<std::string> CalibrationSet::*;

/// The lists of files of one kind that sets have, each once.
class SharedFrames {
public:
    SharedFrames(const std::vector<CalibrationSet>& sets, FilesOfKind kind) : kind_(kind)
    {
        for (const CalibrationSet& set : sets) {
            opened_.emplace(set.*kind, std::make_shared<FrameSet>());
        }
    }
    int Count() const
    {
        const auto add = [](int sum, const auto& list) { return sum + static_cast<int>(list.first.size()); };
        return std::accumulate(opened_.begin(), opened_.end(), 0, add);
    }
    void Open(Stage& stage) const
    {
        for (const auto& [files, frames] : opened_) {
            OpenAll(files, *frames, stage);
        }
    }
    const std::shared_ptr<FrameSet>& Of(const CalibrationSet& set) const { return opened_.at(set.*kind_); }

    static void OpenAll(const std::vector<std::string>& files, FrameSet& frames, Stage& stage)
    {
        for (const std::string& file : files) {
            frames.Add(file);
            stage.Step();
        }
    }

private:
    FilesOfKind kind_;
    std::map<std::vector<std::string>, std::shared_ptr<FrameSet>> opened_;
};

Plan OpenFrames(const Options& options, const Run& run)
{
    const std::vector<CalibrationSet> sets = SetsOf(options);
    const SharedFrames kinds[] = {{sets, &CalibrationSet::bias},
                                  {sets, &CalibrationSet::darks},
                                  {sets, &CalibrationSet::flats},
                                  {sets, &CalibrationSet::flatDarks}};
    int total = static_cast<int>(options.lights.size()) + (options.onto.empty() ? 0 : 1);
    for (const SharedFrames& kind : kinds) {
        total += kind.Count();
    }
    Stage stage(run, "Checking frames...", total);
    Plan plan;
    SharedFrames::OpenAll(options.lights, plan.lights, stage);
    for (const SharedFrames& kind : kinds) {
        kind.Open(stage);
    }
    for (const CalibrationSet& set : sets) {
        plan.sets.push_back(
            {kinds[0].Of(set), kinds[1].Of(set), kinds[2].Of(set), kinds[3].Of(set), set.flatsAreCalibrated, {}, {}});
    }
    plan.setOf = SetOfEachLight(options);
    if (!options.onto.empty()) {
        SharedFrames::OpenAll({options.onto}, plan.onto, stage);
    }
    return plan;
}

/// Checks what the options ask of the patch, now that the size of the frames is known.
void CheckPatch(const Options& options, const Plan& plan)
{
    if (options.align != AlignMethod::kShift) {
        return;
    }
    const int smaller = std::min(plan.width, plan.height);
    if (options.size > smaller) {
        throw FileError(plan.lights.Path(0), "size = " + std::to_string(options.size) + ": must be at most " +
                                                 std::to_string(smaller) + ", the smaller side of the lights");
    }
    if (options.reference) {
        const auto [x, y] = *options.reference;
        if (x < 0 || x >= plan.width || y < 0 || y >= plan.height) {
            throw FileError(plan.lights.Path(0), "star = " + std::to_string(x) + "," + std::to_string(y) +
                                                     ": must lie within the lights, 0,0 to " +
                                                     std::to_string(plan.width - 1) + "," +
                                                     std::to_string(plan.height - 1));
        }
    }
}

} // namespace

bool ExposuresMatch(const std::optional<double>& light, const std::optional<double>& dark)
{
    return !light || !dark || AreClose(*light, *dark);
}

Plan MakePlan(const Options& options, const Run& run)
{
    CheckOptions(options);
    Plan plan = OpenFrames(options, run);
    const io::FrameReader& first = plan.lights.Reader(0);
    plan.width = first.Width();
    plan.height = first.Height();
    plan.planes = first.Planes();
    CheckPatch(options, plan);
    CheckSizes(plan);
    BringToOneOrder(options, plan);
    for (int i = 0; i < plan.lights.Count(); ++i) {
        plan.exposures.push_back(io::ExposureSeconds(plan.lights.Info(i).header));
    }
    CheckExposures(plan);
    NoteUnknownExposures(plan);
    FindDarkScales(plan);
    FindPatterns(options, plan);
    NoteHintedPattern(options, plan);
    return plan;
}

} // namespace corvane::stack
