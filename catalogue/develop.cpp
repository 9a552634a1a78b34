// Development and background filters.

#include <algorithm>
#include <cmath>
#include <string>

#include "catalogue/background.h"
#include "catalogue/cosmic_rays.h"
#include "catalogue/display_levels.h"
#include "catalogue/fill.h"
#include "catalogue/made.h"
#include "catalogue/operations.h"
#include "catalogue/shape.h"
#include "catalogue/undefined.h"
#include "corvane/core/error.h"
#include "corvane/core/walk.h"
#include "corvane/filter/filter.h"

namespace corvane::catalogue {
namespace {

// Brings bright areas towards white: what lies far above the offset tends to mean + offset, each counted from black.
double OffsetForWhite(const CStlImage& image)
{
    const double white = image.GetLevelMax(0) - image.GetAvrGray(0);
    return std::max(white, image.GetLevelMin(0) + 0.5 * image.GetLevelRange(0));
}

double DevelopmentOffset(const CStlImage& image, const Arguments& arguments)
{
    if (!arguments.Has("offset")) {
        return OffsetForWhite(image);
    }
    const double offset = arguments.Number("offset");
    if (offset <= image.GetLevelMin(0)) {
        throw arguments.Refusal("offset",
                                "must be above the level min of the image, " + ToText(Value(image.GetLevelMin(0))));
    }
    return offset;
}

int PlaneSelector(const CStlImage& image, const std::string& plane)
{
    const int selector = plane == "red" ? 0 : (plane == "green" ? 1 : (plane == "blue" ? 2 : 3));
    return image.GetPlanes() < 3 ? 0 : selector;
}

/// What brightness the development divides by, before it is blurred: that of the selected plane, or the mean of three.
double DividingBrightness(const CStlImage& image, int selector, int x, int y)
{
    if (selector < 3) {
        return image.GetPixelGray256f(x, y, selector);
    }
    return (image.GetPixelGray256f(x, y, 0) + image.GetPixelGray256f(x, y, 1) + image.GetPixelGray256f(x, y, 2)) / 3.0;
}

/// Samples beside a blown core are divided by its light, and would outline it in black: what has lost more than half of
/// the value that it would have in a flat area gets that.
void LightenOutlines(const CStlImage& image, double offset, int selector, const CRect* rect, int threads,
                     CStlImage& result)
{
    constexpr double kMostLost = 0.5;
    const double a = image.To256(offset, 0);
    const double gain = image.To256(image.GetAvrGrayRaw(0), 0) + a;
    const CRect area = WorkingArea(image, rect);
    const auto lightenRow = [&](int y) {
        for (int x = static_cast<int>(area.left); x < area.right; ++x) {
            const double factor = gain / (std::max(DividingBrightness(image, selector, x, y), 0.0) + a);
            for (int plane = 0; plane < image.GetPlanes(); ++plane) {
                const double inFlatArea = image.GetPixelGray256f(x, y, plane) * factor;
                if (inFlatArea > 0.0 && result.GetPixelGray256f(x, y, plane) < kMostLost * inFlatArea) {
                    result.SetPixelGray256f(x, y, static_cast<float>(inFlatArea), plane);
                }
            }
        }
    };
    ForRowBlocks(RowBlocks(area), ThreadsOn(result, {&image}, threads), [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            lightenRow(y);
        }
    });
}

CStlImage RunDevelopment(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    if (!std::isfinite(given.GetAvrGrayRaw(0))) {
        throw InputError("image", "has undefined samples in its first plane; " + std::string(kFillThem));
    }
    const CStlImage image = WithLevels(given, 1.0, 6.0); // bright areas are held back, so white may be near
    const double offset = DevelopmentOffset(image, arguments);
    const int selector = PlaneSelector(image, arguments.Text("plane"));
    CImgFilter result(image);
    result.DigitalDvlp(offset, arguments.Number("weight"), image, &selector, arguments.Rectangle("rect"), run);
    LightenOutlines(image, offset, selector, arguments.Rectangle("rect"), run.Threads(), result);
    return result;
}

CStlImage RunSmoothBackground(const CStlImage& given, const Arguments& arguments, const Run& run)
{
    constexpr double kSkySigma = 3.0;
    const CStlImage image = WithLevels(given, 2.0, 18.0); // smoothing fades over one deviation
    const Sky sky = MeasureSky(image);
    const double level = arguments.Has("level") ? arguments.Number("level") : sky.mean + kSkySigma * sky.sigma;
    CImgFilter result(image);
    result.BkgSmooth(level, Shape(arguments), arguments.Number("weight"), image, arguments.Rectangle("rect"), run);
    return result;
}

Footprint BackgroundFootprint(const Arguments& arguments)
{
    Footprint footprint = AroundShape<LevelUse::Chosen>(arguments);
    footprint.statistics = !arguments.Has("level");
    return footprint;
}

void CheckHotPixels(const Arguments& arguments)
{
    if (!arguments.Flag("hot") && !arguments.Flag("cool")) {
        throw arguments.Refusal("cool", "must be yes with hot = no, or no pixel would change");
    }
}

Operation Development()
{
    return {
        .name = "ddp",
        .summary = "show bright cores and faint detail together, as film does",
        .help = "Divides each sample by a blurred one plus the offset, both counted from black, as film saturates "
                "where it is bright. A flat area as bright as the mean stays; what is at or below black stays too. "
                "About blown cores samples keep half of their brightness at least, so that none is outlined in black. "
                "Without display levels, it chooses them from the sky first. The result is made for "
                "the levels that it has: show it with those.",
        .parameters = {NumberParameter("offset", "the smaller, the more bright areas are held back; above black",
                                       "counts", kAnyNumber, "what makes bright areas tend to white"),
                       WeightParameter(),
                       ChoiceParameter("plane", "which plane of a colour image is blurred to divide all; colours stay",
                                       {"red", "green", "blue", "all"}, "all"),
                       RectangleParameter()},
        .footprint = Always({.columns = 1, .rows = 1, .levels = LevelUse::Chosen, .statistics = true}),
        .aliases = {"digital-development"},
        .run = RunDevelopment};
}

Operation SmoothBackground()
{
    return {.name = "smooth-background",
            .summary = "smooth the sky and keep what is brighter",
            .help =
                "Samples up to the level become the weighted mean of their neighbourhood. Smoothing fades out below "
                "the level, over a twentieth of the range of the display levels. A colour image is judged by its "
                "brightness. Without display levels, it chooses them from the sky first.",
            .parameters = {NumberParameter("level", "the sample up to which is smoothed", "counts", kAnyNumber,
                                           "3 standard deviations above the sky"),
                           ShapeParameter("square5"), WeightParameter(), RectangleParameter()},
            .footprint = BackgroundFootprint,
            .run = RunSmoothBackground};
}

// By levels that make steps wider than the noise. What is near a step falls to one side of it by the rounding of
// positions within the image.
Operation Posterize()
{
    return {.name = "posterize",
            .summary = "cut brightness into a few steps with smooth edges",
            .help = "Between black and white of the display levels; colours become grey. Without display levels, it "
                    "chooses them from the sky first. Noise makes edges rough: smooth it before.",
            .parameters = {WholeParameter("steps", "number of steps above black", "", {1.0, 65535.0}, 8),
                           RectangleParameter()},
            .footprint = Always({.columns = 1, .rows = 1, .levels = LevelUse::Chosen, .placed = true}),
            .aliases = {"posterise"},
            .run = MadeByLevels<CImgFilter, 1, 12, [](auto& result, const Arguments& given, const auto&... to) {
                result.AAPosterizationFilter(given.Whole("steps"), to...);
            }>};
}

Operation HotPixels()
{
    return {.name = "hot-pixels",
            .summary = "replace pixels that stand out by the median about them",
            .help =
                "A sample c is replaced by the median m of its neighbourhood where |m / c - 1| is above the "
                "threshold. The bias counts too: a frame that it was subtracted from needs a higher threshold. Sharp "
                "stars are in danger below 0.4.",
            .parameters = {ShapeParameter("square3"),
                           NumberParameter("threshold",
                                           "contrast above which a pixel is replaced; 0.5: twice the median or more",
                                           "", {0.0, 1000.0}, 0.5),
                           FlagParameter("hot", "replace pixels above the median", true),
                           FlagParameter("cool", "replace pixels below the median", true), RectangleParameter()},
            .footprint = AroundShape<>,
            .check = CheckHotPixels,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.NoiseCut(Shape(given), given.Number("threshold"), given.Flag("cool"), given.Flag("hot"), to...);
            }>};
}

// By levels that let the first of the usual lines lie above the noise.
Operation Contour()
{
    return {.name = "contour",
            .summary = "draw isophotes: lines of equal brightness",
            .help = "At levels spaced evenly between black and white of the display levels. Without display levels, it "
                    "chooses them from the sky first. Noise makes lines rough: smooth it before.",
            .parameters = {WholeParameter("levels", "number of lines between black and white", "", {1.0, 65535.0}, 8),
                           FlagParameter("overlay", "draw on the image; otherwise white on black", true),
                           RectangleParameter()},
            .footprint = Always(Around(1, LevelUse::Chosen)),
            .aliases = {"isophotes"},
            .run = MadeByLevels<CImgFilter, 0, 27, [](auto& result, const Arguments& given, const auto&... to) {
                result.ContourFilter(given.Whole("levels"), given.Flag("overlay"), to...);
            }>};
}

} // namespace

std::vector<Operation> DevelopOperations()
{
    return {Development(), Background(), SmoothBackground(), Posterize(), HotPixels(), CosmicRays(), Fill(), Contour()};
}

} // namespace corvane::catalogue
