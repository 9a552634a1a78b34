#include "stack/describe.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

#include "corvane/core/text.h"
#include "io/bayer.h"
#include "io/metadata.h"
#include "io/sky.h"
#include "stack/follow.h"
#include "stack/names.h"

namespace corvane::stack {

namespace {

/// What holds for one frame, or for its file, but not for a stack.
constexpr const char* kStaleCards[] = {"DATE",    "DATE-END", "DATE_END", "TIME-END", "UTEND",   "MJD-END", "DATAMIN",
                                       "DATAMAX", "CBLACK",   "CWHITE",   "CBLACK2",  "CWHITE2", "CBLACK3", "CWHITE3"};

/// Other words for the start of one frame, which DATE-OBS replaces.
constexpr const char* kStartCards[] = {"DATE-LOC", "DATE_OBS", "TIME-OBS", "TIME_OBS", "UT", "UTC",
                                       "UTSTART",  "UTC-OBS",  "MJD-OBS",  "MJD-AVG",  "JD", "JD-OBS"};

/// What the used lights say of time, as far as they say it.
struct Times {
    int frames = 0;
    int exposures = 0;
    double live = 0.0;
    std::optional<double> first;
    double weights = 0.0; ///< of those that say when they began
    double middles = 0.0; ///< sum of weight times the middle of their exposures, as seconds after `first`

    void Add(const std::optional<double>& start, const std::optional<double>& exposure, double weight);
    double Middle() const { return *first + (weights > 0.0 ? middles / weights : 0.0); }
};

void Times::Add(const std::optional<double>& start, const std::optional<double>& exposure, double weight)
{
    ++frames;
    if (exposure) {
        ++exposures;
        live += *exposure;
    }
    if (start) {
        if (!first || *start < *first) {
            middles += weights * (first.value_or(*start) - *start);
            first = start;
        }
        weights += weight;
        middles += weight * (*start - *first + exposure.value_or(0.0) / 2.0);
    }
}

Times CollectTimes(const Plan& plan, const std::vector<FrameReport>& frames)
{
    Times times;
    for (int i = 0; i < plan.lights.Count(); ++i) {
        if (frames[i].used) {
            times.Add(io::ObservationTime(plan.lights.Info(i).header), plan.exposures[i], frames[i].weight);
        }
    }
    return times;
}

void RemoveCards(std::span<const char* const> keywords, io::Header& header)
{
    for (const char* keyword : keywords) {
        header.Remove(keyword);
    }
}

void SetTimes(const Times& times, const std::optional<double>& exposure, io::Header& header)
{
    header.Set("NCOMBINE", times.frames, "number of frames combined");
    header.Set("STACKCNT", times.frames, "number of frames combined");
    if (exposure) {
        header.Set("EXPTIME", *exposure, "[s] exposure of one frame");
    }
    if (times.exposures == times.frames) {
        header.Set("LIVETIME", times.live, "[s] exposure of all frames together");
    }
    if (times.first) {
        RemoveCards(kStartCards, header);
        header.Set("DATE-OBS", io::FormatTime(*times.first), "start of the earliest frame");
        header.Set("DATE-AVG", io::FormatTime(times.Middle()), "mean of the middles of the frames, by weight");
    }
}

/// The letters that a light brings along and those of the calibration that all lights had, each once.
std::string CalibrationLetters(const std::vector<CalibrationSet>& sets, const std::string& before)
{
    const auto haveAll = [&](std::vector<std::string> CalibrationSet::*kind) {
        return std::none_of(sets.begin(), sets.end(), [&](const CalibrationSet& set) { return (set.*kind).empty(); });
    };
    const bool has[] = {haveAll(&CalibrationSet::bias), haveAll(&CalibrationSet::darks),
                        haveAll(&CalibrationSet::flats)};
    std::string letters;
    for (int i = 0; i < 3; ++i) {
        const char letter = "BDF"[i];
        if (has[i] || before.find(letter) != std::string::npos) {
            letters += letter;
        }
    }
    for (const char letter : before) {
        if (letter != ' ' && letters.find(letter) == std::string::npos) {
            letters += letter;
        }
    }
    return letters;
}

void SetCalibration(const Options& options, io::Header& header)
{
    const std::string letters = CalibrationLetters(SetsOf(options), header.Text("CALSTAT").value_or(""));
    if (!letters.empty()) {
        header.Set("CALSTAT", letters, "calibration: B bias, D dark, F flat");
    }
    if (options.pedestal != 0.0) {
        header.Set("PEDESTAL", header.Number("PEDESTAL").value_or(0.0) - options.pedestal,
                   "add this to take the pedestal off");
    }
}

std::string FramesText(const char* kind, const std::vector<std::string>& files)
{
    if (files.empty()) {
        return "";
    }
    const std::string count = files.size() == 1 ? "" : "median of " + std::to_string(files.size()) + " from ";
    return std::string(" ") + kind + " " + count + files.front() + ";";
}

std::string SetText(const CalibrationSet& set)
{
    return FramesText("bias", set.bias) + FramesText("dark", set.darks) + FramesText("flat", set.flats) +
           FramesText("flat-dark", set.flatDarks);
}

/// The calibration frames; of several sets, how many lights each has.
std::string CalibrationText(const Options& options)
{
    const std::vector<CalibrationSet> sets = SetsOf(options);
    if (sets.size() == 1) {
        return SetText(sets.front());
    }
    std::string text;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto lights = std::count(options.setOfLight.begin(), options.setOfLight.end(), i);
        const std::string frames = SetText(sets[i]);
        text.append(" ").append(std::to_string(lights)).append(lights == 1 ? " light with" : " lights with");
        text += frames.empty() ? " none;" : frames;
    }
    return text;
}

std::string PlaceText(const PixelPlace& place)
{
    return std::to_string(place.x) + "," + std::to_string(place.y);
}

std::string AlignText(const Options& options, const Registration& result)
{
    std::string text = std::string(" --align ") + NameOf(kAlignNames, options.align);
    if (options.align == AlignMethod::kStars) {
        text += options.alignsScale ? " --scale" : "";
        text += options.onto.empty() ? "" : " --onto " + options.onto;
        text += std::string(" --transform ") + NameOf(kTransformNames, options.transform);
    }
    if (options.align == AlignMethod::kShift) {
        text += " --size " + std::to_string(options.size) + " --search " + std::to_string(options.search);
        text += result.reference ? " --star " + PlaceText(*result.reference) : "";
    }
    const bool hasReference = options.align != AlignMethod::kNone || !options.referenceFile.empty();
    if (hasReference && result.frames.size() > 1) {
        text += " --reference " + result.frames[static_cast<std::size_t>(result.referenceLight)].file;
    }
    return text;
}

std::string LimitsText(const Options& options)
{
    std::string text;
    const auto add = [&](const char* name, const std::optional<double>& sigmas) {
        if (sigmas) {
            text += std::string(" --reject-") + name + " " + NumberText(*sigmas);
        }
    };
    add("fwhm", options.rejectFwhm);
    add("stars", options.rejectStars);
    add("background", options.rejectBackground);
    return text;
}

/// What is made of the values of so many lights.
std::string CombineText(const Options& options, int lights)
{
    if (options.method) {
        return std::string(" --method ") + NameOf(kMethodNames, *options.method);
    }
    const RejectOptions reject = SettledRejection(options.reject, CombineOf(options), lights);
    std::string text = std::string(" --combine ") + NameOf(kCombineNames, CombineOf(options)) + " --reject " +
                       NameOf(kRejectNames, *reject.method);
    if (reject.method != RejectMethod::kNone && reject.method != RejectMethod::kEsd) {
        text += " --low " + NumberText(*reject.low) + " --high " + NumberText(*reject.high);
    }
    text += reject.iterations > 0 ? " --iterations " + std::to_string(reject.iterations) : "";
    return text + (*reject.grow > 0 ? " --grow " + std::to_string(*reject.grow) : "");
}

std::string MosaicText(const Options& options, const Plan& plan)
{
    if (plan.patterns.empty()) {
        return plan.isMosaic ? " --bayer none" : "";
    }
    const BayerPattern first = plan.patterns.front();
    const bool isCommon = std::count(plan.patterns.begin(), plan.patterns.end(), first) == std::ssize(plan.patterns);
    return (isCommon ? std::string(" --bayer ") + NameOf(first) : "") + " --debayer " +
           NameOf(kDemosaicNames, options.demosaic);
}

std::string DrizzleText(const Options& options)
{
    return options.drizzle ? " --drizzle " + NumberText(*options.drizzle) + " --drop " + NumberText(options.drop) +
                                 " --drop-shape " + NameOf(kDropNames, options.dropShape)
                           : "";
}

/// What is said of the grid where it is not simply that of the reference.
std::string GridText(const Options& options)
{
    std::string text;
    if (options.canvas != Canvas::kReference) {
        text += std::string(" --canvas ") + NameOf(kCanvasNames, options.canvas);
    }
    for (const FollowedPlace& place : options.follow) {
        text += (&place == &options.follow.front() ? " --follow " : " ") + ToText(place);
    }
    return text;
}

std::string ParametersText(const Options& options, const Plan& plan, int used, const Registration& result)
{
    return "stack" + CombineText(options, used) + AlignText(options, result) + LimitsText(options) +
           MosaicText(options, plan) + " --normalise " + NameOf(kNormaliseNames, NormaliseOf(options)) + " --weight " +
           NameOf(kWeightNames, WeightOf(options)) + GridText(options) + " --coverage " +
           NameOf(kCoverageNames, options.coverage) + " --interpolate " +
           NameOf(kInterpolationNames, options.interpolation) + DrizzleText(options) +
           (options.cosmetic ? " --cosmetic" : "") + (options.cosmic ? " --cosmic" : "") +
           (options.allowMixed ? " --allow-mixed" : "") + " --pedestal " + NumberText(options.pedestal);
}

void AddHistory(const Options& options, const Plan& plan, int used, const Registration& result, io::Header& header)
{
    const std::vector<FrameReport>& frames = result.frames;
    header.AddHistory(ParametersText(options, plan, used, result));
    std::string text =
        "Corvane " CORVANE_VERSION ": " + std::to_string(used) + " of " + std::to_string(frames.size()) + " lights;";
    text += CalibrationText(options);
    text.pop_back();
    header.AddHistory(text);
    for (const FrameReport& frame : frames) {
        if (!frame.used) {
            header.AddHistory("left out: " + frame.file + ": " + frame.reason);
        }
    }
}

} // namespace

io::Header DescribeStack(const Options& options, const Plan& plan, const Registration& result)
{
    io::Header header = plan.lights.Info(result.referenceLight).header;
    const Times times = CollectTimes(plan, result.frames);
    RemoveCards(kStaleCards, header);
    if (!plan.patterns.empty()) {
        RemoveCards(io::kBayerCards, header);
    }
    SetTimes(times, plan.exposures[static_cast<std::size_t>(result.referenceLight)], header);
    SetCalibration(options, header);
    if (!plan.onto.IsEmpty()) {
        io::TakeCoordinates(plan.onto.Info(0).header, header);
    }
    if (options.drizzle) {
        io::ScalePixelSize(header, 1.0 / *options.drizzle, 1.0 / *options.drizzle);
    }
    AddHistory(options, plan, times.frames, result, header);
    return header;
}

io::Header DescribeRegistered(const Options& options, const Plan& plan, const Result& stack, int light)
{
    io::Header header = plan.lights.Info(light).header;
    if (!plan.patterns.empty()) {
        RemoveCards(io::kBayerCards, header);
    }
    SetCalibration(options, header);
    io::TakeCoordinates(stack.header, header);
    const std::string& reference = plan.onto.IsEmpty() ? plan.lights.Path(stack.referenceLight) : options.onto;
    header.AddHistory("Corvane " CORVANE_VERSION ": calibrated, and placed on " + reference + " by " +
                      NameOf(kAlignNames, options.align));
    return header;
}

} // namespace corvane::stack
