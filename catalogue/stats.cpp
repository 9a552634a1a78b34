#include "catalogue/operations.h"
#include "catalogue/region.h"

namespace corvane::catalogue {
namespace {

/// A row for each plane; values that mean nothing stay empty.
Outputs RunStats(Inputs& inputs, const Arguments& arguments, const Run&)
{
    Table table{
        .columns = {
            {"plane", 0}, {"max"}, {"min"}, {"mean"}, {"median"}, {"count", 0}, {"blank", 0}, {"not_finite", 0}}};
    for (const RegionMeasures& plane : MeasureRegion(inputs["image"].front().image, arguments.Rectangle("rect"))) {
        const auto value = [&](double v) { return plane.counted > 0 ? Cell(v) : Cell(); };
        const auto count = [](auto number) { return static_cast<double>(number); };
        table.rows.push_back({count(table.rows.size()), value(plane.max), value(plane.min), value(plane.mean),
                              value(plane.median), count(plane.counted), count(plane.blank), count(plane.infinite)});
    }
    return {{"planes", std::move(table)}};
}

} // namespace

std::vector<Operation> StatsOperations()
{
    Parameter rect = RectangleParameter();
    rect.summary = "measure this rectangle only; right and bottom are the first column and row outside";
    return {
        {.name = "stats",
         .summary = "measure the samples of an image or of a region of it",
         .help = "Blank samples, NaN and infinities are left out, and counted. The median of an even number of samples "
                 "is the upper of the two in the middle.",
         .inputs = {{.summary = "the image to measure"}},
         .parameters = {std::move(rect)},
         .outputs = {{"planes", OutputKind::Table, "extremes, mean and median of each plane, and of how many samples"}},
         .run = RunStats}};
}

} // namespace corvane::catalogue
