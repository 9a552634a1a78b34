#include "stack/combine/offset_field.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace corvane::stack {

namespace {

constexpr double kNoSlope = 1e-3; // pixels^2: nothing beside distances of cells, but something beside none

/// The uniform cubic spline between two values, `t` of their distance from the first one: what the value before them,
/// they and the next count.
std::array<double, 4> SplineWeights(double t)
{
    const double s = 1.0 - t;
    return {s * s * s / 6.0, (4.0 - 3.0 * t * t * (1.0 + s)) / 6.0, (4.0 - 3.0 * s * s * (1.0 + t)) / 6.0,
            t * t * t / 6.0};
}

template <class Visit>
void ForKnown(const stars::CellGrid& cells, Visit visit)
{
    for (int row = 0; row < cells.Rows(); ++row) {
        for (int column = 0; column < cells.Columns(); ++column) {
            if (!std::isnan(cells.Value(column, row))) {
                visit(column, row);
            }
        }
    }
}

/// The value of the nearest cell.
double Nearest(const stars::CellGrid& cells, int column, int row)
{
    return cells.Value(std::clamp(column, 0, cells.Columns() - 1), std::clamp(row, 0, cells.Rows() - 1));
}

} // namespace

SlopingPlane FitPlane(const std::vector<PlacedValue>& values)
{
    const auto mean = [&](auto of) {
        const double sum = std::accumulate(values.begin(), values.end(), 0.0,
                                           [=](double s, const PlacedValue& v) { return s + of(v); });
        return sum / static_cast<double>(values.size());
    };
    const double x = mean([](const PlacedValue& v) { return v.x; });
    const double y = mean([](const PlacedValue& v) { return v.y; });
    const double level = mean([](const PlacedValue& v) { return v.value; });
    const double xx = kNoSlope + mean([=](const PlacedValue& v) { return (v.x - x) * (v.x - x); });
    const double yy = kNoSlope + mean([=](const PlacedValue& v) { return (v.y - y) * (v.y - y); });
    const double xy = mean([=](const PlacedValue& v) { return (v.x - x) * (v.y - y); });
    const double xv = mean([=](const PlacedValue& v) { return (v.x - x) * (v.value - level); });
    const double yv = mean([=](const PlacedValue& v) { return (v.y - y) * (v.value - level); });
    const double determinant = xx * yy - xy * xy;
    const double slopeX = (yy * xv - xy * yv) / determinant;
    const double slopeY = (xx * yv - xy * xv) / determinant;
    return {level - slopeX * x - slopeY * y, slopeX, slopeY};
}

OffsetField::OffsetField(stars::CellGrid cells, const SlopingPlane& plane) : plane_(plane), rest_(std::move(cells))
{
    rest_.RemoveOutliers();
    TakeOffPlane();
    rest_.FillGaps();
    Smooth();
}

void OffsetField::TakeOffPlane()
{
    std::vector<PlacedValue> values;
    ForKnown(rest_, [&](int column, int row) {
        values.push_back({rest_.XOf(column), rest_.YOf(row), rest_.Value(column, row)});
    });
    const SlopingPlane plane = FitPlane(values);
    ForKnown(rest_, [&](int column, int row) {
        rest_.Value(column, row) -= static_cast<float>(plane.At(rest_.XOf(column), rest_.YOf(row)));
    });
    plane_ = {plane_.level + plane.level, plane_.slopeX + plane.slopeX, plane_.slopeY + plane.slopeY};
}

void OffsetField::Smooth()
{
    for (const auto& [x, y] : {std::pair{1, 0}, {0, 1}}) {
        const stars::CellGrid before = rest_;
        ForKnown(before, [&, dx = x, dy = y](int column, int row) {
            const double sides = Nearest(before, column - dx, row - dy) + Nearest(before, column + dx, row + dy);
            rest_.Value(column, row) = static_cast<float>(0.25 * sides + 0.5 * before.Value(column, row));
        });
    }
}

/// The spline down the columns that count in a cell.
std::array<double, 4> OffsetField::ColumnsAbout(int cell, double y) const
{
    const double place = rest_.RowAt(y);
    const int row = static_cast<int>(std::floor(place));
    const std::array<double, 4> down = SplineWeights(place - std::floor(place));
    std::array<double, 4> columns{};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            columns[i] += down[j] * Nearest(rest_, cell - 1 + i, row - 1 + j);
        }
    }
    return columns;
}

void OffsetField::FillRow(double y, const double* x, int count, double* sums) const
{
    for (int i = 0; i < count;) {
        const double cell = std::floor(rest_.ColumnAt(x[i]));
        const auto isInCell = [&](double place) { return place >= cell && place < cell + 1.0; };
        int end = i + 1;
        for (; end < count && isInCell(rest_.ColumnAt(x[end])); ++end) {
        }
        const std::array<double, 4> columns = ColumnsAbout(static_cast<int>(cell), y);
        for (; i < end; ++i) {
            const std::array<double, 4> weights = SplineWeights(rest_.ColumnAt(x[i]) - cell);
            double sum = plane_.At(x[i], y);
            for (int k = 0; k < 4; ++k) {
                sum += weights[k] * columns[k];
            }
            sums[i] = sum;
        }
    }
}

} // namespace corvane::stack
