#include "stars/lattice.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvane::stars {

namespace {

/// The cubic between two nodes that are 1 apart, by powers of the way from the first.
std::array<double, 4> CubicBetween(double before, double first, double second, double after)
{
    return {first, 0.5 * (second - before), before - 2.5 * first + 2.0 * second - 0.5 * after,
            0.5 * (after - before) + 1.5 * (first - second)};
}

double CubicAt(const std::array<double, 4>& cubic, double t)
{
    return ((cubic[3] * t + cubic[2]) * t + cubic[1]) * t + cubic[0];
}

/// The node before a place, of which one lies before it and two behind.
int NodeBefore(double place, int count)
{
    return std::clamp(static_cast<int>(std::floor(place)), 1, count - 3);
}

} // namespace

Lattice::Lattice(double x, double y, double stepX, double stepY, int columns, int rows)
    : x_(x), y_(y), stepX_(stepX), stepY_(stepY), columns_(columns), rows_(rows),
      values_(static_cast<std::size_t>(columns) * rows)
{}

void Lattice::AddRow(double y, int count, double* values) const
{
    const double place = (y - y_) / stepY_;
    const int above = NodeBefore(place, rows_);
    const double* const node = values_.data() + static_cast<std::size_t>(above - 1) * columns_;
    std::vector<double> nodes(static_cast<std::size_t>(columns_));
    for (int i = 0; i < columns_; ++i) {
        nodes[i] = CubicAt(CubicBetween(node[i], node[i + columns_], node[i + 2 * columns_], node[i + 3 * columns_]),
                           place - above);
    }
    int x = 0;
    for (int i = 1; i <= columns_ - 3 && x < count; ++i) {
        const std::array<double, 4> cubic = CubicBetween(nodes[i - 1], nodes[i], nodes[i + 1], nodes[i + 2]);
        const double end = std::ceil(x_ + (i + 1) * stepX_);
        const int last = i == columns_ - 3 ? count : std::clamp(static_cast<int>(end), x, count);
        for (; x < last; ++x) {
            values[x] += CubicAt(cubic, (x - x_) / stepX_ - i);
        }
    }
}

} // namespace corvane::stars
