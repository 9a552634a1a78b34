#include "stack/combine/local_sky.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

#include "stars/sky_blocks.h"

namespace corvane::stack {

namespace {

constexpr int kCell = 128; // pixels: so wide that the noise of the cells is nothing beside that of the pixels
constexpr int kStep = 12;  // pixels: no whole number of steps makes a block, so that places lie as often between the
                           // blocks of either frame: what that takes off a nebula is the same in both
constexpr std::size_t kFewest = 4; // a quarter of the places of a cell must be known

/// Whether a place, counted in blocks, lies between the centres of blocks, or on the only one.
bool IsBetween(double place, int blocks)
{
    return blocks > 1 ? place >= 0.0 && place <= blocks - 1.0 : std::fabs(place) < 0.5;
}

/// What a frame shows at a place of the reference; NaN where nothing is known.
double ValueAt(const PlacedSky& sky, double x, double y)
{
    const stars::CellGrid& blocks = sky.blocks;
    const Position at = sky.mapping.Map(x, y);
    const bool isKnown =
        IsBetween(blocks.ColumnAt(at.x), blocks.Columns()) && IsBetween(blocks.RowAt(at.y), blocks.Rows());
    return isKnown ? blocks.At(at.x, at.y) : std::numeric_limits<double>::quiet_NaN();
}

/// Middles of steps that a stretch is divided into evenly.
std::vector<double> Places(int first, int end)
{
    const int count = std::max((end - first) / kStep, 1);
    std::vector<double> places;
    for (int i = 0; i < count; ++i) {
        places.push_back(first + (i + 0.5) * (end - first) / count - 0.5);
    }
    return places;
}

/// What is known of the differences in an area; nothing when that is too little.
std::vector<PlacedValue> DifferencesIn(const CRect& area, const PlacedSky& target, const PlacedSky& light,
                                       double factor)
{
    const std::vector<double> across = Places(static_cast<int>(area.left), static_cast<int>(area.right));
    const std::vector<double> down = Places(static_cast<int>(area.top), static_cast<int>(area.bottom));
    std::vector<PlacedValue> known;
    for (const double y : down) {
        for (const double x : across) {
            const double difference = ValueAt(target, x, y) - factor * ValueAt(light, x, y);
            if (!std::isnan(difference)) {
                known.push_back({x, y, difference});
            }
        }
    }
    return kFewest * known.size() < across.size() * down.size() ? std::vector<PlacedValue>() : known;
}

/// The mean of the middle half of values above a plane.
double MiddleAbove(const SlopingPlane& plane, const std::vector<PlacedValue>& values)
{
    std::vector<float> above;
    std::transform(values.begin(), values.end(), std::back_inserter(above),
                   [&](const PlacedValue& v) { return static_cast<float>(v.value - plane.At(v.x, v.y)); });
    return stars::MiddleMean(above);
}

/// The middle of values in the middle of their places.
PlacedValue MiddleOf(const std::vector<PlacedValue>& values)
{
    PlacedValue middle{0.0, 0.0, MiddleAbove({}, values)};
    for (const PlacedValue& v : values) {
        middle.x += v.x / static_cast<double>(values.size());
        middle.y += v.y / static_cast<double>(values.size());
    }
    return middle;
}

} // namespace

std::shared_ptr<const OffsetField> OffsetsBetween(const PlacedSky& target, const PlacedSky& light, double factor,
                                                  int width, int height)
{
    stars::CellGrid cells(width, height, kCell);
    std::vector<std::vector<PlacedValue>> differences;
    std::vector<PlacedValue> middles;
    for (int i = 0; i < cells.Columns() * cells.Rows(); ++i) {
        const CRect area = cells.Area(i % cells.Columns(), i / cells.Columns());
        differences.push_back(DifferencesIn(area, target, light, factor));
        if (!differences.back().empty()) {
            middles.push_back(MiddleOf(differences.back()));
        }
    }
    if (middles.empty()) {
        return nullptr;
    }
    const SlopingPlane plane = FitPlane(middles); // so that a cell that is known in part tells what it is in its centre
    for (int i = 0; i < cells.Columns() * cells.Rows(); ++i) {
        if (!differences[i].empty()) {
            cells.Value(i % cells.Columns(), i / cells.Columns()) =
                static_cast<float>(MiddleAbove(plane, differences[i]));
        }
    }
    return std::make_shared<const OffsetField>(std::move(cells), plane);
}

} // namespace corvane::stack
