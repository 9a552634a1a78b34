#include "stars/cell_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "corvane/core/interpolation.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr float kUnknown = std::numeric_limits<float>::quiet_NaN();
constexpr double kOutlier = 2.0; // three median deviations, as deviations

/// The known values of a cell and its eight neighbours.
std::vector<double> KnownAround(const CellGrid& grid, int column, int row)
{
    std::vector<double> known;
    for (int r = std::max(row - 1, 0); r <= std::min(row + 1, grid.Rows() - 1); ++r) {
        for (int c = std::max(column - 1, 0); c <= std::min(column + 1, grid.Columns() - 1); ++c) {
            if (!std::isnan(grid.Value(c, r))) {
                known.push_back(grid.Value(c, r));
            }
        }
    }
    return known;
}

/// Replaces every value by next(value, known values around it), all from the values before.
template <class Next>
void ReplaceValues(CellGrid& grid, Next next)
{
    const CellGrid before = grid;
    for (int row = 0; row < grid.Rows(); ++row) {
        for (int column = 0; column < grid.Columns(); ++column) {
            const float value = before.Value(column, row);
            grid.Value(column, row) = static_cast<float>(next(value, KnownAround(before, column, row)));
        }
    }
}

double Mean(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

bool IsUnknown(float v)
{
    return std::isnan(v);
}

/// A place among the centres of `count` cells of a size: the cell before it, and how far it is on the way to the next.
struct Bracket {
    int cell;
    double share;

    Bracket(double place, double size, int count)
    {
        const double t = std::clamp((place + 0.5) / size - 0.5, 0.0, count - 1.0);
        cell = std::clamp(static_cast<int>(t), 0, std::max(count - 2, 0));
        share = t - cell;
    }
};

} // namespace

CellGrid::CellGrid(int width, int height, int cell)
    : width_(width), height_(height), columns_(std::max(1, static_cast<int>(std::lround(1.0 * width / cell)))),
      rows_(std::max(1, static_cast<int>(std::lround(1.0 * height / cell)))),
      values_(static_cast<std::size_t>(columns_) * rows_, kUnknown)
{}

CRect CellGrid::Area(int column, int row) const
{
    const auto edge = [](int i, int size, int count) {
        return static_cast<int>(static_cast<long long>(i) * size / count);
    };
    return {edge(column, width_, columns_), edge(row, height_, rows_), edge(column + 1, width_, columns_),
            edge(row + 1, height_, rows_)};
}

void CellGrid::FillGaps()
{
    const auto unknown = [this] { return std::count_if(values_.begin(), values_.end(), IsUnknown); };
    const auto all = static_cast<std::ptrdiff_t>(values_.size());
    for (auto left = unknown(); left > 0 && left < all; left = unknown()) {
        ReplaceValues(*this, [](float value, const std::vector<double>& known) {
            return IsUnknown(value) && !known.empty() ? Mean(known) : value;
        });
    }
}

void CellGrid::RemoveOutliers()
{
    ReplaceValues(*this, [](float value, std::vector<double> known) {
        const RobustLevel level = MeasureLevel(std::move(known));
        return std::fabs(value - level.median) > kOutlier * level.deviation ? level.median : value;
    });
}

double CellGrid::Median() const
{
    std::vector<double> values(values_.begin(), values_.end());
    return MedianOf(values);
}

double CellGrid::Between(int column, double y) const
{
    const Bracket at(y, 1.0 * height_ / rows_, rows_);
    const double above = Value(column, at.cell);
    const double below = Value(column, std::min(at.cell + 1, rows_ - 1));
    return Ramp(above, below, at.share);
}

double CellGrid::At(double x, double y) const
{
    const Bracket at(x, 1.0 * width_ / columns_, columns_);
    const double left = Between(at.cell, y);
    const double right = Between(std::min(at.cell + 1, columns_ - 1), y);
    return Ramp(left, right, at.share);
}

void CellGrid::FillRow(int y, float* values) const
{
    const double size = 1.0 * width_ / columns_;
    double left = Between(0, y);
    int first = 0;
    for (int column = 0; column <= columns_; ++column) {
        const double right = Between(std::min(column, columns_ - 1), y);
        const double centre = (column + 0.5) * size - 0.5;
        const int end = column == columns_ ? width_ : std::clamp(static_cast<int>(std::ceil(centre)), first, width_);
        const double slope = (right - left) / size;
        for (int x = first; x < end; ++x) {
            values[x] = static_cast<float>(right + (x - centre) * slope);
        }
        first = end;
        left = right;
    }
}

} // namespace corvane::stars
