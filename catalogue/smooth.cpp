// Filters that smooth, and the one that tightens stars by ranks.

#include <cmath>
#include <string>

#include "catalogue/made.h"
#include "catalogue/operations.h"
#include "catalogue/shape.h"
#include "corvane/core/error.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::catalogue {
namespace {

int LastRank(const Arguments& arguments)
{
    return filter::Points(Shape(arguments)) - 1;
}

Footprint GaussianFootprint(const Arguments& arguments)
{
    return Around(static_cast<int>(std::ceil(2.0 * arguments.Number("sigma"))));
}

void CheckRank(double rank, const Arguments& arguments)
{
    const int last = LastRank(arguments);
    if (rank > last) {
        throw arguments.Refusal("rank", "must be 0 to " + std::to_string(last) + " for a shape of " +
                                            std::to_string(last + 1) + " samples");
    }
}

Parameter RankParameter(Kind kind, const char* summary, Value defaultValue)
{
    return {.name = "rank",
            .kind = kind,
            .summary = summary,
            .min = 0.0,
            .max = filter::kMostPoints - 1,
            .defaultValue = defaultValue};
}

Operation Mean()
{
    return {.name = "mean",
            .summary = "smooth by the mean of the neighbourhood",
            .help = "Weight 1 is the plain mean; below it the sample counts for more than its neighbours, which blurs "
                    "less.",
            .parameters = {ShapeParameter("square3"), WeightParameter(), RectangleParameter()},
            .footprint = AroundShape<>,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MeanFilter(Shape(given), given.Number("weight"), to...);
            }>};
}

Operation MeanKeepEdges()
{
    return {.name = "mean-keep-edges",
            .summary = "smooth flat areas by the mean, and leave edges as they are",
            .help = "As mean, with the weight lowered to 0 where the sample differs from its four neighbours together "
                    "by the range of the first plane's display levels. Levels that show the image well (auto-levels) "
                    "suit it.",
            .parameters = {ShapeParameter("square3"), WeightParameter(), RectangleParameter()},
            .footprint = AroundShape<LevelUse::Read>,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MeanWithoutEdgeFilter(Shape(given), given.Number("weight"), to...);
            }>};
}

Operation Median()
{
    return {.name = "median",
            .summary = "smooth by the median of the neighbourhood",
            .help = "Takes single odd samples out, hot pixels and cosmic rays, and keeps edges sharp.",
            .parameters = {ShapeParameter("square3"), RectangleParameter()},
            .footprint = AroundShape<>,
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MedianFilter(Shape(given), to...);
            }>};
}

Operation Rank()
{
    return {.name = "rank",
            .summary = "take the value of a rank in the neighbourhood",
            .help = "The samples of the shape are put into ascending order: rank 0 is the smallest, the middle one the "
                    "median, the last one (4, 8 or 20 by shape) the largest.",
            .parameters = {ShapeParameter("square3"),
                           RankParameter(Kind::Whole, "place in the ascending order, from 0", 2), RectangleParameter()},
            .footprint = AroundShape<>,
            .check = [](const Arguments& arguments) { CheckRank(arguments.Whole("rank"), arguments); },
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MinMaxFilter(Shape(given), given.Whole("rank"), to...);
            }>};
}

Operation Minimum()
{
    return {.name = "minimum",
            .summary = "take the smallest sample of the neighbourhood",
            .help = "Shrinks what is bright: faint stars vanish.",
            .parameters = {ShapeParameter("square3"), RectangleParameter()},
            .footprint = AroundShape<>,
            .aliases = {"min"},
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MinMaxFilter(Shape(given), 0, to...);
            }>};
}

Operation Maximum()
{
    return {.name = "maximum",
            .summary = "take the largest sample of the neighbourhood",
            .help = "Grows what is bright.",
            .parameters = {ShapeParameter("square3"), RectangleParameter()},
            .footprint = AroundShape<>,
            .aliases = {"max"},
            .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
                result.MinMaxFilter(Shape(given), LastRank(given), to...);
            }>};
}

Operation Gaussian()
{
    return {
        .name = "gaussian",
        .summary = "smooth by a Gaussian",
        .help = "The Gaussian is cut off at twice its deviation. Stars become wider by it: their deviations add as "
                "squares.",
        .parameters = {NumberParameter("sigma", "standard deviation", "pixels", {0.1, 5.0}, 1.0), RectangleParameter()},
        .footprint = GaussianFootprint,
        .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
            result.GaussianFilter(given.Number("sigma"), to...);
        }>};
}

Operation StarSharpen()
{
    return {
        .name = "star-sharpen",
        .summary = "tighten stars by a low rank of the neighbourhood",
        .help = "A sample becomes the value of the rank, interpolated between whole ranks, where that differs from "
                "the largest sample of the neighbourhood by at least the threshold: on the slopes of stars. Low "
                "ranks tighten more.",
        .parameters = {ShapeParameter("square3"),
                       RankParameter(Kind::Number, "place in the ascending order, from 0", 2.0),
                       NumberParameter("threshold",
                                       "least difference that counts, as a part of the largest sample; 0: everywhere",
                                       "", {0.0, 1.0}, 0.1),
                       FlagParameter("keep-peaks", "leave samples that are the largest of their neighbourhood", true),
                       RectangleParameter()},
        .footprint = AroundShape<>,
        .check = [](const Arguments& arguments) { CheckRank(arguments.Number("rank"), arguments); },
        .run = Made<CImgFilter, [](auto& result, const Arguments& given, const auto&... to) {
            result.StarSharpFilter(Shape(given), given.Number("rank"), given.Number("threshold"),
                                   given.Flag("keep-peaks"), to...);
        }>};
}

} // namespace

std::vector<Operation> SmoothOperations()
{
    return {Mean(), MeanKeepEdges(), Median(), Rank(), Minimum(), Maximum(), Gaussian(), StarSharpen()};
}

} // namespace corvane::catalogue
