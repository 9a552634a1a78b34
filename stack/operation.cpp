#include "stack/operation.h"

#include <cmath>
#include <iterator>
#include <utility>

#include "stack/names.h"

namespace corvane::stack {

namespace {

using catalogue::Arguments;
using catalogue::Count;
using catalogue::Files;
using catalogue::FlagParameter;
using catalogue::Input;
using catalogue::Kind;
using catalogue::NumberParameter;
using catalogue::Operation;
using catalogue::Parameter;
using catalogue::WholeParameter;

constexpr const char* kKeepMosaic = "none";
constexpr double kFarthest = 1e6; // [pixels]; the size of the lights says more

template <class Value, std::size_t count>
std::vector<std::string> WordsOf(const Names<Value, count>& names)
{
    std::vector<std::string> words;
    for (const auto& [word, value] : names) {
        words.emplace_back(word);
    }
    return words;
}

template <class Value, std::size_t count>
Parameter Choice(const char* name, const Names<Value, count>& names, Value usual, const char* summary)
{
    return catalogue::ChoiceParameter(name, summary, WordsOf(names), NameOf(names, usual));
}

/// A choice that is made of other things when it is not given; the words say of which.
template <class Value, std::size_t count>
Parameter Choice(const char* name, const Names<Value, count>& names, const char* whenAbsent, const char* summary)
{
    return {
        .name = name, .kind = Kind::Choice, .summary = summary, .choices = WordsOf(names), .whenAbsent = whenAbsent};
}

Parameter Limit(const char* name, const std::string& which)
{
    return NumberParameter(name, "leave out lights " + which + " than the median of all by more than so many", "sigmas",
                           {0.0, kMaxReject}, "no limit");
}

Parameter ValueLimit(const char* name, const std::string& what)
{
    return NumberParameter(name, what, "deviations", {0.0, kMaxReject}, "3; with reject = minmax 1");
}

std::vector<Input> Frames()
{
    return {
        {.name = "light", .summary = "the frames of the night, or folders that hold them", .count = Count::Several},
        {.name = "bias", .summary = "bias frames", .count = Count::Any},
        {.name = "dark", .summary = "dark frames; with bias frames they are scaled by exposure", .count = Count::Any},
        {.name = "flat", .summary = "flat fields", .count = Count::Any},
        {.name = "flat-dark", .summary = "darks of the flats' exposure, in place of the bias", .count = Count::Any}};
}

std::vector<Parameter> LightParameters()
{
    const Options usual;
    return {NumberParameter("pedestal", "added before a dark is taken off, so that noise below 0 is kept", "counts",
                            {0.0, kMaxPedestal}, usual.pedestal),
            FlagParameter("cosmetic", "replace the pixels that are hot in the darks", false),
            FlagParameter("cosmic", "replace what cosmic rays have hit in single lights", false),
            {.name = "bayer",
             .kind = Kind::Choice,
             .summary = "filters of the first pixels, two rows of two; none keeps the filter mosaic",
             .choices = {"RGGB", "GRBG", "GBRG", "BGGR", kKeepMosaic},
             .whenAbsent = "by the header"},
            {.name = "filter",
             .kind = Kind::Text,
             .summary = "take the lights of this filter alone",
             .whenAbsent = "of folders, one stack for each"},
            FlagParameter("allow-mixed", "take frames together that do not fit, with a warning", false),
            Choice("debayer", kDemosaicNames, usual.demosaic, "how colours are made of a filter mosaic"),
            Choice("align", kAlignNames, usual.align, "how lights are brought onto the reference"),
            {.name = "reference",
             .kind = Kind::Image,
             .summary = "the light that others are placed on",
             .whenAbsent = "the best by its stars; with align = shift the first"},
            {.name = "onto",
             .kind = Kind::Image,
             .summary = "stars: a frame from outside the night, such as another filter's stack, whose grid is taken",
             .whenAbsent = "the reference's"},
            FlagParameter("scale", "stars: look for lights of another scale, too", false),
            Choice("transform", kTransformNames, usual.transform,
                   "stars: how a light may lie on the reference; auto goes by its residuals"),
            {.name = "star",
             .kind = Kind::Numbers,
             .summary = "shift: centre of the star to align by",
             .unit = "pixels",
             .min = -kFarthest,
             .max = kFarthest,
             .choices = {"X,Y"},
             .whenAbsent = "the brightest that stands alone"},
            WholeParameter("size", "shift: width of the patch around that star", "pixels",
                           {kMinPatchSize, kMaxPatchSize}, usual.size),
            WholeParameter("search", "shift: largest shift to look for", "pixels", {0, kMaxSearch}, usual.search),
            Limit("reject-fwhm", "whose stars are wider"),
            Limit("reject-stars", "that show fewer stars"),
            Limit("reject-background", "whose sky is brighter")};
}

std::vector<Parameter> CombineParameters()
{
    const Options usual;
    return {
        Choice("combine", kCombineNames, "mean", "what is made of the values that count at a place"),
        Choice("reject", kRejectNames, "auto for the mean, by the number of lights; else none",
               "how values that do not count are told: those beyond limits of the deviation (sigma), of one that "
               "outliers hardly widen (winsorized), of the median deviation (mad), off a line through the sorted "
               "values (linear-fit), extreme deviates by Rosner's test (esd), or the ends (minmax)"),
        ValueLimit("low",
                   "values farther below than so many deviations are rejected; with minmax so many of the lowest"),
        ValueLimit("high", "the same above"),
        WholeParameter("iterations", "most rounds of rejection; 0: until nothing changes", "", {0, kMaxIterations},
                       usual.reject.iterations),
        WholeParameter(
            "grow",
            "where values of a light that are too high form a trail or a hit, reject what lies within so many "
            "pixels of it, too",
            "pixels", {0, kMaxGrow}, "1 with reject = auto, else 0"),
        Choice("method", kMethodNames, "as combine and reject tell",
               "in place of combine and reject: one of the composites' own statistics"),
        Choice("normalise", kNormaliseNames, "both; none without align = stars",
               "bring lights to the brightness of the reference first"),
        Choice("weight", kWeightNames, "snr for combine = mean with align = stars, else none",
               "mean: what lights count by"),
        Choice("canvas", kCanvasNames, usual.canvas, "what part of the sky the stack shows: of the lights, or all"),
        Choice("coverage", kCoverageNames, usual.coverage,
               "keep pixels that any light has, or only those that all have"),
        Choice("interpolate", kInterpolationNames, usual.interpolation,
               "how samples of moved lights are taken between their pixels"),
        NumberParameter("drizzle", "drop the pixels of the lights, made smaller, onto a grid of so many pixels to one",
                        "pixels to one of a light", {kMinDrizzle, kMaxDrizzle}, "no drizzle"),
        NumberParameter("drop", "drizzle: width of a dropped pixel", "pixels of a light", {kMinDrop, 1.0}, usual.drop),
        Choice("drop-shape", kDropNames, usual.dropShape, "drizzle: what a dropped pixel is")};
}

Operation StackOperation()
{
    std::vector<Parameter> parameters = LightParameters();
    std::vector<Parameter> combining = CombineParameters();
    std::move(combining.begin(), combining.end(), std::back_inserter(parameters));
    return {
        .name = "stack",
        .summary = "calibrate, align and combine the frames of a night",
        .help =
            "Calibration frames of one kind are combined by median. Lights that cannot be placed with certainty are "
            "left out and named.",
        .inputs = Frames(),
        .parameters = std::move(parameters),
        .outputs = {{.summary = "the stack"}},
        .run = catalogue::OnInputs{}};
}

Operation RegisterOperation()
{
    return {.name = "register",
            .summary = "show how the lights of a night lie on each other",
            .help =
                "Does what `stack` does before it combines, and writes no image. Shifts go to the right and down the "
                "file's rows, turns are about the middle, clockwise where the first row is the top.",
            .inputs = Frames(),
            .parameters = LightParameters(),
            .outputs = {{.name = "lights",
                         .kind = catalogue::OutputKind::Table,
                         .summary = "what was measured of each light, where it lies, and why it is left out"}},
            .run = catalogue::OnInputs{}};
}

/// The value that a word of the arguments stands for, if one is given.
template <class Value, std::size_t count>
std::optional<Value> Chosen(const Arguments& arguments, const char* name, const Names<Value, count>& names)
{
    return arguments.Has(name) ? ValueOf(names, arguments.Text(name)) : std::nullopt;
}

std::optional<double> NumberOf(const Arguments& arguments, const char* name)
{
    return arguments.Has(name) ? std::optional(arguments.Number(name)) : std::nullopt;
}

void SetFiles(const Files& files, Options& options)
{
    const auto of = [&](const char* input) {
        const auto found = files.find(input);
        return found == files.end() ? std::vector<std::string>() : found->second;
    };
    options.lights = of("light");
    options.bias = of("bias");
    options.darks = of("dark");
    options.flats = of("flat");
    options.flatDarks = of("flat-dark");
}

void SetMosaic(const Arguments& arguments, Options& options)
{
    options.demosaic = *Chosen(arguments, "debayer", kDemosaicNames);
    if (arguments.Has("bayer")) {
        const std::optional<BayerPattern> pattern = NamedBayerPattern(arguments.Text("bayer"));
        options.mosaic = pattern ? MosaicUse::kPattern : MosaicUse::kKeep;
        options.pattern = pattern.value_or(options.pattern);
    }
}

void SetAlignment(const Arguments& arguments, Options& options)
{
    options.align = *Chosen(arguments, "align", kAlignNames);
    options.referenceFile = arguments.InWords("reference");
    options.onto = arguments.InWords("onto");
    options.alignsScale = arguments.Flag("scale");
    options.transform = *Chosen(arguments, "transform", kTransformNames);
    options.size = arguments.Whole("size");
    options.search = arguments.Whole("search");
    if (arguments.Has("star")) {
        const std::vector<double>& star = arguments.Numbers("star");
        options.reference = PixelPlace{static_cast<int>(std::lround(star[0])), static_cast<int>(std::lround(star[1]))};
    }
}

void SetCombining(const Arguments& arguments, Options& options)
{
    const Options usual;
    options.method = Chosen(arguments, "method", kMethodNames);
    options.combine = Chosen(arguments, "combine", kCombineNames);
    options.reject = {Chosen(arguments, "reject", kRejectNames), NumberOf(arguments, "low"),
                      NumberOf(arguments, "high"),
                      arguments.Has("iterations") ? arguments.Whole("iterations") : usual.reject.iterations,
                      arguments.Has("grow") ? std::optional(arguments.Whole("grow")) : std::nullopt};
    options.normalise = Chosen(arguments, "normalise", kNormaliseNames);
    options.weight = Chosen(arguments, "weight", kWeightNames);
    options.canvas = Chosen(arguments, "canvas", kCanvasNames).value_or(options.canvas);
    options.coverage = Chosen(arguments, "coverage", kCoverageNames).value_or(options.coverage);
    options.interpolation = Chosen(arguments, "interpolate", kInterpolationNames).value_or(options.interpolation);
    options.drizzle = NumberOf(arguments, "drizzle");
    options.drop = arguments.Has("drop") ? arguments.Number("drop") : options.drop;
    options.dropShape = Chosen(arguments, "drop-shape", kDropNames).value_or(options.dropShape);
}

} // namespace

std::vector<Operation> Operations()
{
    return {RegisterOperation(), StackOperation()};
}

Options OptionsOf(const Files& files, const Arguments& arguments)
{
    Options options;
    SetFiles(files, options);
    SetMosaic(arguments, options);
    SetAlignment(arguments, options);
    SetCombining(arguments, options);
    options.pedestal = arguments.Number("pedestal");
    options.cosmetic = arguments.Flag("cosmetic");
    options.cosmic = arguments.Flag("cosmic");
    options.filter = arguments.InWords("filter");
    options.allowMixed = arguments.Flag("allow-mixed");
    options.rejectFwhm = NumberOf(arguments, "reject-fwhm");
    options.rejectStars = NumberOf(arguments, "reject-stars");
    options.rejectBackground = NumberOf(arguments, "reject-background");
    CheckOptions(options);
    return options;
}

} // namespace corvane::stack
