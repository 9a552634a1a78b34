#include <algorithm>

#include "catalogue/display_levels.h"
#include "catalogue/made.h"
#include "catalogue/operations.h"
#include "catalogue/plane.h"
#include "corvane/core/error.h"
#include "corvane/tone/auto_level.h"
#include "corvane/tone/invert.h"

namespace corvane::catalogue {
namespace {

void RunAutoLevels(io::Frame& frame, const Arguments& arguments, const Run&)
{
    SetAutoLevels(frame.image, arguments.Number("low"), arguments.Number("high"), arguments.Flag("per-plane"),
                  arguments.Rectangle("rect"));
    frame.image.SetOwnLevel(1);
}

void CheckAutoLevels(const Arguments& arguments)
{
    const double low = arguments.Number("low");
    const double high = arguments.Number("high");
    if (low + high <= 0.0) {
        throw arguments.Refusal("high", "must be above " + ToText(Value(-low)) +
                                            " with that low, or black would not lie below white");
    }
}

void CheckOrder(double min, double max)
{
    if (min >= max) {
        throw ParameterError("max", ToText(Value(max)), "must be above min, " + ToText(Value(min)));
    }
}

void CheckLevels(const Arguments& arguments)
{
    if (arguments.Has("min") && arguments.Has("max")) {
        CheckOrder(arguments.Number("min"), arguments.Number("max"));
    }
}

void RunLevels(io::Frame& frame, const Arguments& arguments, const Run&)
{
    CStlImage& image = frame.image;
    const int given = GivenPlane(arguments, image);
    const int last = given == -1 ? image.GetPlanes() - 1 : given;
    for (int plane = std::max(given, 0); plane <= last; ++plane) {
        image.SetLevel(plane, arguments.Number("min"), arguments.Number("max"));
    }
    image.SetOwnLevel(1);
}

void RunClip(io::Frame& frame, const Arguments& arguments, const Run&)
{
    CStlImage& image = frame.image;
    const auto min = [&](int plane) {
        return arguments.Has("min") ? arguments.Number("min") : image.GetLevelMin(plane);
    };
    const auto max = [&](int plane) {
        return arguments.Has("max") ? arguments.Number("max") : image.GetLevelMax(plane);
    };
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        CheckOrder(min(plane), max(plane));
    }
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        image.SetLevel(plane, min(plane), max(plane));
    }
    image.CutOutOfLevel();
}

Footprint ClipFootprint(const Arguments& arguments)
{
    return {.levels = arguments.Has("min") && arguments.Has("max") ? LevelUse::Unread : LevelUse::Read};
}

Operation Invert()
{
    return {.name = "invert",
            .summary = "turn the image into its negative",
            .help = "A sample moves as far below white as it was above black: each plane is turned over within its "
                    "display levels, which stay. Samples outside of the levels stay outside.",
            .parameters = {RectangleParameter()},
            .footprint = Always({.levels = LevelUse::Read}),
            .run = Made<CImgInvert, [](auto& result, const Arguments&, const auto&... to) { result.Do(to...); }>};
}

Parameter SigmaParameter(const char* name, const char* summary, double defaultValue, Value (*readSetting)())
{
    return {.name = name,
            .summary = summary,
            .unit = "standard deviations",
            .min = -100.0,
            .max = 100.0,
            .defaultValue = defaultValue,
            .readSetting = readSetting};
}

Operation AutoLevels()
{
    const AutoLevelSettings defaults;
    return {.name = "auto-levels",
            .summary = "choose levels that show the sky dark and objects bright",
            .help = "Black and white are put around the mean of the samples, as many standard deviations away as "
                    "given, but not beyond the data. Mean and deviation of a monochrome image leave out stars. No "
                    "sample changes.",
            .parameters = {SigmaParameter("low", "how far black lies below the mean", defaults.lowSigma,
                                          [] { return Value(ReadAutoLevelSettings().lowSigma); }),
                           SigmaParameter("high", "how far white lies above the mean", defaults.highSigma,
                                          [] { return Value(ReadAutoLevelSettings().highSigma); }),
                           {.name = "per-plane",
                            .kind = Kind::Flag,
                            .summary = "give each plane of a colour image levels of its own",
                            .defaultValue = defaults.perPlane != 0,
                            .readSetting = [] { return Value(ReadAutoLevelSettings().perPlane != 0); }},
                           RectangleParameter()},
            .footprint = Always({.statistics = true, .levelsOnly = true}),
            .check = CheckAutoLevels,
            .run = RunAutoLevels};
}

Operation Levels()
{
    return {.name = "levels",
            .summary = "set the display levels",
            .help = "The levels say which samples show black and white. No sample changes.",
            .parameters = {{.name = "min", .summary = "the sample that shows black", .unit = "counts"},
                           {.name = "max", .summary = "the sample that shows white", .unit = "counts"},
                           PlaneParameter("the plane to set")},
            .footprint = Always({.levelsOnly = true}),
            .check = CheckLevels,
            .run = RunLevels};
}

Operation Clip()
{
    return {.name = "clip",
            .summary = "cut samples off at the display levels",
            .help = "A sample below black becomes black, one above white or not a number becomes white. Levels given "
                    "here are set first, in every plane.",
            .parameters = {NumberParameter("min", "the least sample that stays", "counts", kAnyNumber,
                                           "the level min of each plane"),
                           NumberParameter("max", "the greatest sample that stays", "counts", kAnyNumber,
                                           "the level max of each plane")},
            .footprint = ClipFootprint,
            .check = CheckLevels,
            .run = RunClip};
}

} // namespace

std::vector<Operation> ToneOperations()
{
    return {Invert(), AutoLevels(), Levels(), Clip()};
}

} // namespace corvane::catalogue
