// Stretches: what bends brightness between black and white.

#include "corvane/tone/stretch.h"

#include <string>
#include <utility>
#include <vector>

#include "catalogue/operations.h"
#include "corvane/core/error.h"
#include "corvane/tone/auto_stretch.h"
#include "corvane/tone/hyperbolic_stretch.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kStretchHelp =
    " x is the place of a sample between low and high, cut to 0..1. The result lies between the display levels, which "
    "stay, so that they show black and white. Blanks and NaN stay.";

StretchScope ScopeOf(const CStlImage& image, const Arguments& arguments)
{
    StretchScope scope;
    if (arguments.Has("low")) {
        scope.low = arguments.Number("low");
    }
    if (arguments.Has("high")) {
        scope.high = arguments.Number("high");
    }
    scope.perPlane = !arguments.Has("per-plane") || arguments.Flag("per-plane");
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const double low = scope.low.value_or(image.GetLevelMin(plane));
        const double high = scope.high.value_or(image.GetLevelMax(plane));
        if (low >= high && arguments.Has("high")) {
            throw arguments.Refusal("high", "must be above low, " + ToText(Value(low)));
        }
        if (low >= high && arguments.Has("low")) {
            throw arguments.Refusal("low", "must be below high, " + ToText(Value(high)));
        }
    }
    return scope;
}

/// The result is to be shown with its levels.
CStlImage StretchedBy(const std::vector<StretchFunction>& functions, const StretchScope& scope, const CStlImage& image,
                      const Arguments& arguments, const Run& run)
{
    CStlImage result(image);
    Stretch(result, image, functions, scope, arguments.Rectangle("rect"), run);
    result.SetOwnLevel(1);
    return result;
}

template <StretchFunction (*kFunctionOf)(const Arguments&)>
CStlImage Stretched(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    return StretchedBy({kFunctionOf(arguments)}, ScopeOf(image, arguments), image, arguments, run);
}

/// A stretch of one number.
template <StretchFunction (*kFunctionOf)(double), const char* kName>
StretchFunction ByNumber(const Arguments& arguments)
{
    return kFunctionOf(arguments.Number(kName));
}

constexpr char kMid[] = "mid";
constexpr char kK[] = "k";
constexpr char kGamma[] = "g";

/// The parameters of a stretch with those that all have.
std::vector<Parameter> WithScope(std::vector<Parameter> parameters)
{
    parameters.push_back(NumberParameter("low", "the sample where x is 0", "counts", kAnyNumber, "the level min"));
    parameters.push_back(NumberParameter("high", "the sample where x is 1", "counts", kAnyNumber, "the level max"));
    parameters.push_back(RectangleParameter());
    return parameters;
}

Operation Pointwise(const char* name, const char* summary, const std::string& help, std::vector<Parameter> parameters,
                    std::vector<std::string> aliases, OnImage run)
{
    return {.name = name,
            .summary = summary,
            .help = help + kStretchHelp,
            .parameters = WithScope(std::move(parameters)),
            .footprint = Always({.levels = LevelUse::Read}),
            .aliases = std::move(aliases),
            .run = run};
}

constexpr const char* kAsinhCurve = "asinh";

CStlImage RunAutoStretch(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    CStlImage result(image);
    const AutoStretchLimits limits{.shadows = arguments.Number("shadows"),
                                   .target = arguments.Number("target"),
                                   .linked = arguments.Flag("linked"),
                                   .curve = arguments.Text("curve") == kAsinhCurve ? AutoStretchCurve::kAsinh
                                                                                   : AutoStretchCurve::kMidtone};
    AutoStretch(result, image, limits, run);
    result.SetOwnLevel(1);
    return result;
}

Operation AutoStretchStep()
{
    const AutoStretchLimits usual;
    return {.name = "autostretch",
            .summary = "show the sky dark grey and all that is above it",
            .help =
                "Black is put so far below the median, in standard deviations of the noise (1.4826 times the median "
                "absolute deviation), and white on the largest sample; they become the display levels. A midtone "
                "stretch between them, as of mtf, or asinh, brings the median to the target. A frame that is mostly "
                "bright is treated as its negative would be; dead pixels alone do not make one. Blanks and NaN stay "
                "and do not count.",
            .parameters = {NumberParameter("shadows", "where black lies, from the median", "standard deviations",
                                           {-100.0, 0.0}, usual.shadows),
                           NumberParameter("target", "where the median comes to, black 0 and white 1", "",
                                           {0.001, 0.999}, usual.target),
                           FlagParameter(
                               "linked",
                               "one stretch for all planes, by the means of their statistics, so that colours stay",
                               usual.linked),
                           ChoiceParameter("curve", "what lifts the median; asinh keeps the colours of stars",
                                           {"mtf", kAsinhCurve}, "mtf")},
            .footprint = Always({.statistics = true}),
            .aliases = {"auto-stretch", "stf"},
            .run = RunAutoStretch};
}

Parameter PerPlaneParameter(const char* summary)
{
    return FlagParameter("per-plane", summary, false);
}

CStlImage RunEqualise(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    StretchScope scope = ScopeOf(image, arguments);
    const auto functions = EqualisingStretches(image, scope, arguments.Rectangle("rect"), run);
    scope.perPlane = true; // each sample goes through the stretch that all have made
    return StretchedBy(functions, scope, image, arguments, run);
}

Operation Equalise()
{
    return {.name = "equalise",
            .summary = "make all steps of brightness equally frequent",
            .help = std::string("x becomes the part of the samples between low and high that lie below it, in 65536 "
                                "steps. Of a colour image all planes go by the samples of all. In a rectangle, its "
                                "samples alone count.") +
                    kStretchHelp,
            .parameters = WithScope({PerPlaneParameter("each plane of a colour image by its own samples")}),
            .footprint = Always({.levels = LevelUse::Read, .statistics = true}),
            .aliases = {"equalize"},
            .run = RunEqualise};
}

void CheckHyperbolic(const Arguments& arguments)
{
    const double sp = arguments.Number("sp");
    if (arguments.Number("lp") > sp) {
        throw arguments.Refusal("lp", "must be at most sp, " + ToText(Value(sp)));
    }
    if (arguments.Number("hp") < sp) {
        throw arguments.Refusal("hp", "must be at least sp, " + ToText(Value(sp)));
    }
}

StretchFunction HyperbolicOf(const Arguments& arguments)
{
    return HyperbolicStretch({.d = arguments.Number("d"),
                              .b = arguments.Number("b"),
                              .sp = arguments.Number("sp"),
                              .lp = arguments.Number("lp"),
                              .hp = arguments.Number("hp"),
                              .inverse = arguments.Flag("inverse")});
}

/// A number of x, that of a letter pair which people write as capitals, too.
Parameter PlaceParameter(const char* name, const char* alias, const char* summary, double defaultValue)
{
    Parameter parameter = NumberParameter(name, summary, "", {0.0, 1.0}, defaultValue);
    parameter.aliases = {alias};
    return parameter;
}

Operation Hyperbolic()
{
    Parameter d = NumberParameter("d", "how far it goes; 0 changes nothing", "", {0.0, 1e6}, 10.0);
    d.aliases = {"D"};
    Operation operation = Pointwise(
        "ghs", "stretch about a chosen brightness (generalised hyperbolic)",
        "Contrast is highest at SP and falls off to both sides as b says: exponentially with 0, like a hyperbola "
        "above 0, like a logarithm with -1, and more slowly below 0 otherwise. Below LP and above HP lines go on "
        "straight. By D. Payne and M. Cranfield.",
        {std::move(d), NumberParameter("b", "how contrast falls off", "", {-100.0, 100.0}, 0.0),
         PlaceParameter("lp", "LP", "x below which it is straight; at most sp", 0.0),
         PlaceParameter("sp", "SP", "x of the highest contrast", 0.0),
         PlaceParameter("hp", "HP", "x above which it is straight; at least sp", 1.0),
         FlagParameter("inverse", "undo the stretch of these numbers", false)},
        {"hyperbolic"}, Stretched<HyperbolicOf>);
    operation.check = CheckHyperbolic;
    return operation;
}

} // namespace

std::vector<Operation> StretchOperations()
{
    return {AutoStretchStep(),
            Pointwise("mtf", "bring a brightness to the middle (midtone)",
                      "x becomes (m - 1) x / ((2 m - 1) x - m): the midtone m comes to 1/2.",
                      {NumberParameter("mid", "the x that comes to 1/2", "", {1e-9, 0.999999999}, 0.25)}, {"midtones"},
                      Stretched<ByNumber<MidtoneStretch, kMid>>),
            Pointwise("asinh", "lift faint light and keep colours",
                      "x becomes asinh(k x) / asinh(k). All planes of a pixel take the factor of their mean, or less "
                      "where the brightest would be cut, so that colours stay.",
                      {NumberParameter("k", "how far it goes", "", {1e-6, 1e9}, 100.0),
                       PerPlaneParameter("stretch each plane of a colour image by itself")},
                      {"arcsinh"}, Stretched<ByNumber<AsinhStretch, kK>>),
            Pointwise("log", "lift faint light by a logarithm", "x becomes log(1 + k x) / log(1 + k).",
                      {NumberParameter("k", "how far it goes", "", {1e-6, 1e9}, 1000.0)}, {"logarithm"},
                      Stretched<ByNumber<LogStretch, kK>>),
            Pointwise("gamma", "lift the middle by a power", "x becomes x to the power 1 / g.",
                      {NumberParameter("g", "above 1 it brightens, below it darkens", "", {0.01, 100.0}, 2.2)}, {},
                      Stretched<ByNumber<GammaStretch, kGamma>>),
            Hyperbolic(),
            Equalise()};
}

} // namespace corvane::catalogue
