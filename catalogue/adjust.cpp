// Brightness, arithmetic, colour balance, curves, grey steps and false colours.

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/display_levels.h"
#include "catalogue/made.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/points.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/tone/bright.h"
#include "corvane/tone/calculation.h"
#include "corvane/tone/color_balance.h"
#include "corvane/tone/false_color.h"
#include "corvane/tone/reduce_tone.h"
#include "corvane/tone/tone_curve.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kDisplayUnits = "display units, black 0 and white 255";
constexpr const char* kGivenLevels = " The display levels stay. Without them, it chooses them from the sky first.";

CStlImage WithSkyLevels(const CStlImage& image)
{
    return WithLevels(image, 1.0, 12.0);
}

Operation Brightness()
{
    return {.name = "brightness",
            .summary = "change brightness and contrast",
            .help = std::string("A display value s becomes s + (s - centre) * contrast / 256 + brightness. Nothing is "
                                "cut off. A colour image is changed by the levels of its red plane.") +
                    kGivenLevels,
            .parameters = {NumberParameter("brightness", "added to every sample", kDisplayUnits, {-255.0, 255.0}, 20.0),
                           NumberParameter("contrast", "256 doubles the distance from the centre, -128 halves it",
                                           "1/256", {-256.0, 2560.0}, 64.0),
                           {.name = "centre",
                            .summary = "what contrast leaves alone",
                            .unit = kDisplayUnits,
                            .min = 0.0,
                            .max = 255.0,
                            .defaultValue = 64.0,
                            .aliases = {"center"}},
                           RectangleParameter()},
            .footprint = Always({.levels = LevelUse::Chosen}),
            .aliases = {"contrast"},
            .run = MadeByLevels<CImgBright, 1, 12, [](auto& result, const Arguments& given, const auto&... to) {
                result.Do(given.Number("brightness"), given.Number("contrast"), given.Number("centre"), to...);
            }>};
}

/// The modes of `CImgCalculation::Do`.
enum Mode { kAdd = 0, kSubtract = 1, kMultiply = 2, kDivide = 3 };

template <Mode kMode>
constexpr auto Calculate = [](CImgCalculation& result, const Arguments& given, const auto&... to) {
    result.Do(given.Number("value"), kMode, given.Has("clip-negative") && given.Flag("clip-negative"), to...);
};

Parameter ValueParameter(const char* summary, const char* unit)
{
    return {.name = "value", .summary = summary, .unit = unit};
}

constexpr const char* kBlanksStay = "Blank samples stay blank. The display levels stay.";

void CheckDivisor(const Arguments& arguments)
{
    if (arguments.Number("value") == 0.0) {
        throw arguments.Refusal("value", "must not be 0");
    }
}

std::vector<Operation> Arithmetic()
{
    return {
        {.name = "add",
         .summary = "add a number to every sample",
         .help = kBlanksStay,
         .parameters = {ValueParameter("what to add", "counts"), RectangleParameter()},
         .footprint = Always({}),
         .run = Made<CImgCalculation, Calculate<kAdd>>},
        {.name = "subtract",
         .summary = "take a number off every sample",
         .help = kBlanksStay,
         .parameters = {ValueParameter("what to take off", "counts"),
                        FlagParameter("clip-negative", "make 0 of what falls below 0", false), RectangleParameter()},
         .footprint = Always({}),
         .run = Made<CImgCalculation, Calculate<kSubtract>>},
        {.name = "multiply",
         .summary = "multiply every sample by a number",
         .help = kBlanksStay,
         .parameters = {ValueParameter("the factor", ""), RectangleParameter()},
         .footprint = Always({}),
         .run = Made<CImgCalculation, Calculate<kMultiply>>},
        {.name = "divide",
         .summary = "divide every sample by a number",
         .help = kBlanksStay,
         .parameters = {ValueParameter("the divisor; not 0", ""), RectangleParameter()},
         .footprint = Always({}),
         .check = CheckDivisor,
         .run = Made<CImgCalculation, Calculate<kDivide>>}};
}

Parameter OffsetParameter(const char* plane)
{
    return NumberParameter(plane, std::string("added to the ") + plane + " plane", kDisplayUnits, {-255.0, 255.0}, 0.0);
}

Operation Balance()
{
    return {
        .name = "balance",
        .summary = "brighten or darken each colour",
        .help = std::string("All planes go by the levels of the red one, so that the same number is the same step "
                            "in each. Nothing is cut off. An image of one plane takes red alone.") +
                kGivenLevels,
        .parameters = {OffsetParameter("red"), OffsetParameter("green"), OffsetParameter("blue"), RectangleParameter()},
        .footprint = Always({.levels = LevelUse::Chosen}),
        .aliases = {"color-balance", "colour-balance"},
        .run = MadeByLevels<CImgColorBalance, 1, 12, [](auto& result, const Arguments& given, const auto&... to) {
            result.Do(given.Number("red"), given.Number("green"), given.Number("blue"), to...);
        }>};
}

const Points kStraight{{0.0, 0.0}, {1.0, 1.0}};
const Points kLift{{0.0, 0.0}, {0.25, 0.5}, {0.6, 0.85}, {1.0, 1.0}};

bool HasChannel(const Arguments& arguments)
{
    return std::any_of(std::begin(kChannels), std::end(kChannels),
                       [&](const char* channel) { return arguments.Has(channel); });
}

Points MasterPoints(const Arguments& arguments)
{
    if (arguments.Has("file")) {
        return ReadPoints(arguments.Text("file"));
    }
    return arguments.Has("points") ? arguments.Curve("points") : HasChannel(arguments) ? kStraight : kLift;
}

void CheckCurve(const Arguments& arguments)
{
    if (arguments.Has("points") && arguments.Has("file")) {
        throw arguments.Refusal("file", "points give the curve, too; one must go");
    }
}

CStlImage RunCurve(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    if (HasChannel(arguments) && !given.IsColor()) {
        throw InputError("image", "must have 3 planes for red, green and blue; it has 1");
    }
    const int entries = arguments.Whole("entries");
    std::vector<std::vector<float>> tables{Tabulate(MasterPoints(arguments), entries)};
    for (const char* const channel : kChannels) {
        tables.push_back(Tabulate(arguments.Has(channel) ? arguments.Curve(channel) : kStraight, entries));
    }
    const float* const curves[] = {tables[0].data(), tables[1].data(), tables[2].data(), tables[3].data()};
    const CStlImage image = WithSkyLevels(given);
    CImgToneCurve result(image);
    result.Do(curves, entries, image, arguments.Rectangle("rect"), run);
    return result;
}

Parameter ChannelParameter(const char* channel)
{
    return {.name = channel,
            .kind = Kind::Curve,
            .summary = std::string("curve of the ") + channel + " plane of a colour image, before the master curve",
            .whenAbsent = "a straight line"};
}

Operation ToneCurve()
{
    return {.name = "curve",
            .summary = "bend brightness by a curve through points",
            .help = std::string("In points and files black is 0 and white is 1. The curve is smooth, does not swing "
                                "beyond its points, and is level before the first and behind the last. Samples above "
                                "white go on along the curve where it rises there, and stop otherwise; samples below "
                                "black become black unless the curve falls there.") +
                    kGivenLevels,
            .parameters = {{.name = "points",
                            .kind = Kind::Curve,
                            .summary = "the master curve",
                            .whenAbsent = ToText(Value(kLift)) + ", or a straight line with red, green or blue"},
                           {.name = "file",
                            .kind = Kind::CurveFile,
                            .summary = "text with the master curve: x and y on each line, or y alone at equal steps",
                            .whenAbsent = "points"},
                           ChannelParameter("red"),
                           ChannelParameter("green"),
                           ChannelParameter("blue"),
                           WholeParameter("entries", "brightness steps that the curve is cut into", "", {2.0, 65536.0},
                                          16384),
                           RectangleParameter()},
            .footprint = Always({.levels = LevelUse::Chosen}),
            .aliases = {"curves", "tone-curve"},
            .check = CheckCurve,
            .run = RunCurve};
}

Operation ReduceTone()
{
    return {.name = "reduce-tone",
            .summary = "leave a few grey steps of each plane",
            .help = std::string("Steps lie at black and evenly above it; none is white. What is blacker than black "
                                "becomes black, what is whiter than white the top step.") +
                    kGivenLevels,
            .parameters = {WholeParameter("levels", "number of steps; 1 makes all black", "", {1.0, 256.0}, 8),
                           RectangleParameter()},
            .footprint = Always({.levels = LevelUse::Chosen}),
            .run = MadeByLevels<CImgReduceTone, 1, 12, [](auto& result, const Arguments& given, const auto&... to) {
                result.Do(given.Whole("levels"), to...);
            }>};
}

/// The maps of `CImgFalseColor`, by name and by number.
const std::vector<std::string> kMaps{"rainbow", "spectrum", "ice", "heat", "0", "1", "2", "3"};

CStlImage RunFalseColor(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    const CStlImage image = WithSkyLevels(given);
    const double low = arguments.Has("low") ? arguments.Number("low") : image.GetLevelMin(0);
    const double high = arguments.Has("high") ? arguments.Number("high") : image.GetLevelMax(0);
    if (low == high) {
        throw ParameterError("high", ToText(Value(high)), "must differ from low");
    }
    CImgFalseColor result(image);
    if (result.ToColor() == 0) {
        AfxThrowMemoryException();
    }
    result.Do(low, high, PlaceOf(arguments.Text("map"), kMaps) % 4, arguments.Whole("cycles"), image,
              arguments.Rectangle("rect"), run);
    return result;
}

Operation FalseColor()
{
    return {
        .name = "false-color",
        .summary = "show brightness as colours",
        .help = std::string("Maps: rainbow (blue, green, red), spectrum (the same from black to white, with jumps), "
                            "ice (black, blue, white), heat (black, red, yellow, white). The result has three "
                            "planes; outside of the rectangle they are grey. High below low turns the map over. Of "
                            "a colour image make one plane with to-grey first.") +
                kGivenLevels,
        .inputs = {{.planes = Planes::Mono}},
        .parameters = {NumberParameter("low", "the sample where the map begins", "counts", kAnyNumber,
                                       "what shows black"),
                       NumberParameter("high", "the sample where the map ends", "counts", kAnyNumber,
                                       "what shows white"),
                       ChoiceParameter("map", "the colours, by name or number", kMaps, kMaps.front()),
                       WholeParameter("cycles", "how many times the map runs from low to high", "", {1.0, 256.0}, 1),
                       RectangleParameter()},
        .footprint = Always({.levels = LevelUse::Chosen, .makesPlanes = true}),
        .aliases = {"false-colour"},
        .run = RunFalseColor};
}

} // namespace

std::vector<Operation> AdjustOperations()
{
    std::vector<Operation> operations{Brightness(), Balance(), ToneCurve(), ReduceTone(), FalseColor()};
    std::vector<Operation> arithmetic = Arithmetic();
    std::move(arithmetic.begin(), arithmetic.end(), std::back_inserter(operations));
    return operations;
}

} // namespace corvane::catalogue
