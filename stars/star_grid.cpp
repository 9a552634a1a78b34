#include "stars/star_grid.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "stars/similarity.h"

namespace corvane::stars {

StarGrid::StarGrid(std::vector<Position> stars) : stars_(std::move(stars))
{
    if (!stars_.empty()) {
        const auto byX = [](const Position& p, const Position& q) { return p.x < q.x; };
        const auto byY = [](const Position& p, const Position& q) { return p.y < q.y; };
        const auto [left, right] = std::minmax_element(stars_.begin(), stars_.end(), byX);
        const auto [top, bottom] = std::minmax_element(stars_.begin(), stars_.end(), byY);
        left_ = left->x;
        top_ = top->y;
        width_ = right->x - left_;
        height_ = bottom->y - top_;
        const double count = Count();
        // the second term keeps the number of cells near that of the stars when they lie on one line
        cellSize_ = std::max({std::sqrt(width_ * height_ / count), std::max(width_, height_) / count, 1e-3});
        columns_ = static_cast<int>(width_ / cellSize_) + 1;
        rows_ = static_cast<int>(height_ / cellSize_) + 1;
    }
    Sort();
}

int StarGrid::Cell(double offset, int cells) const
{
    return static_cast<int>(std::clamp(offset / cellSize_, 0.0, cells - 1.0));
}

std::size_t StarGrid::CellOf(const Position& star) const
{
    return static_cast<std::size_t>(Cell(star.y - top_, rows_)) * columns_ + Cell(star.x - left_, columns_);
}

void StarGrid::Sort()
{
    begins_.assign(static_cast<std::size_t>(columns_) * rows_ + 1, 0);
    for (const Position& star : stars_) {
        ++begins_[CellOf(star) + 1];
    }
    std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
    std::vector<int> next(begins_);
    order_.resize(stars_.size());
    for (int i = 0; i < Count(); ++i) {
        order_[static_cast<std::size_t>(next[CellOf(Star(i))]++)] = i;
    }
}

StarGrid::CellRange StarGrid::Cells(double offset, double radius, int cells) const
{
    return {Cell(offset - radius, cells), Cell(offset + radius, cells)};
}

int StarGrid::Nearest(const Position& at, double radius) const
{
    if (!Contains(at, radius)) {
        return -1;
    }
    const CellRange across = Cells(at.x - left_, radius, columns_);
    const CellRange down = Cells(at.y - top_, radius, rows_);
    int nearest = -1;
    double least = radius * radius;
    for (int row = down.first; row <= down.last; ++row) {
        const int* cells = begins_.data() + static_cast<std::ptrdiff_t>(row) * columns_;
        for (int i = cells[across.first]; i < cells[across.last + 1]; ++i) {
            const int star = order_[static_cast<std::size_t>(i)];
            const double distance = SquaredDistance(Star(star), at);
            if (distance <= least) {
                least = distance;
                nearest = star;
            }
        }
    }
    return nearest;
}

bool StarGrid::Contains(const Position& at, double margin) const
{
    return at.x >= left_ - margin && at.x <= left_ + width_ + margin && at.y >= top_ - margin &&
           at.y <= top_ + height_ + margin;
}

double StarGrid::Area() const
{
    // n stars scattered evenly reach over (n - 1) / (n + 1) of each side
    const double beyond = Count() > 1 ? (Count() + 1.0) / (Count() - 1.0) : 1.0;
    return width_ * height_ * beyond * beyond;
}

std::vector<std::vector<int>> NearestNeighbours(const std::vector<Position>& stars, int count)
{
    const int others = std::min(count, std::max(0, static_cast<int>(stars.size()) - 1));
    std::vector<std::vector<int>> neighbours;
    std::vector<std::pair<double, int>> byDistance(stars.size());
    for (std::size_t i = 0; i < stars.size(); ++i) {
        for (std::size_t j = 0; j < stars.size(); ++j) {
            byDistance[j] = {j == i ? -1.0 : SquaredDistance(stars[i], stars[j]), static_cast<int>(j)};
        }
        std::partial_sort(byDistance.begin(), byDistance.begin() + others + 1, byDistance.end());
        auto& nearest = neighbours.emplace_back();
        for (int k = 1; k <= others; ++k) {
            nearest.push_back(byDistance[static_cast<std::size_t>(k)].second);
        }
    }
    return neighbours;
}

} // namespace corvane::stars
