// Filters that raise local contrast.

#include "catalogue/made.h"
#include "catalogue/operations.h"
#include "catalogue/shape.h"
#include "corvane/filter/filter.h"

namespace corvane::catalogue {
namespace {

// At 2 the definition divides by zero, and just below it noise is all that is left.
constexpr double kMostStrength = 1.9;

Parameter StrengthParameter(const char* summary, double defaultValue)
{
    return {.name = "strength", .summary = summary, .min = 0.0, .max = kMostStrength, .defaultValue = defaultValue};
}

Operation Sharpen()
{
    return {.name = "sharpen",
            .summary = "sharpen by the difference from the neighbours",
            .help =
                "A sample c becomes (2 c - strength * m) / (2 - strength), with m the mean of its neighbours. Noise is "
                "sharpened too: calibrated, stacked frames gain most.",
            .parameters = {ShapeParameter("square3"),
                           StrengthParameter("0 changes nothing, 1 adds the whole difference from the neighbours", 1.0),
                           RectangleParameter()},
            .footprint = AroundShape<>,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.SharpFilter(Shape(given), given.Number("strength"), to...);
            }>};
}

Operation SharpenEdges()
{
    return {.name = "sharpen-edges",
            .summary = "sharpen edges, and leave flat areas as they are",
            .help = "As sharpen, with the strength times the square of the edge: 0 in flat areas, 1 where the sample "
                    "differs from its four neighbours together by the range of the display levels or more. Levels that "
                    "show the image well (auto-levels) suit it.",
            .parameters = {ShapeParameter("square3"), StrengthParameter("the strength at the strongest edges", 1.0),
                           RectangleParameter()},
            .footprint = AroundShape<LevelUse::Read>,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.SharpEdgeFilter(Shape(given), given.Number("strength"), to...);
            }>};
}

Operation Laplacian()
{
    Parameter shape = ShapeParameter("cross");
    shape.summary = "which neighbours count: 4 (cross), 8 (square3), or 4 twice less those at the corners (weighted)";
    shape.choices = {"cross", "square3", "weighted", "0", "1", "2"};
    return {.name = "laplacian",
            .summary = "turn the image into one of its edges",
            .help = "How much a sample differs from its neighbours, regardless of the sign, above black. The display "
                    "levels stay, black being that of the first plane.",
            .parameters = {shape, RectangleParameter()},
            .footprint = Always(Around(1, LevelUse::Read)),
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.LaplacianFilter(Shape(given), to...);
            }>};
}

Operation Unsharp()
{
    return {
        .name = "unsharp",
        .summary = "sharpen by the difference from a blurred image",
        .help = "Adds amount times the difference from the weighted mean of the neighbourhood. Samples that differ "
                "from its plain mean by a smaller part of themselves than the threshold stay.",
        .parameters = {NumberParameter("amount", "how much of the difference is added", "", {0.0, 100.0}, 1.0),
                       ShapeParameter("square5"), WeightParameter(),
                       NumberParameter("threshold",
                                       "contrast below which a sample stays, as a part of the sample; 0 sharpens all",
                                       "", {0.0, 1000.0}, 0.0),
                       RectangleParameter()},
        .footprint = AroundShape<>,
        .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
            result.UnSharpMask(given.Number("amount"), Shape(given), given.Number("weight"), given.Number("threshold"),
                               to...);
        }>};
}

} // namespace

std::vector<Operation> SharpenOperations()
{
    return {Sharpen(), SharpenEdges(), Laplacian(), Unsharp()};
}

} // namespace corvane::catalogue
