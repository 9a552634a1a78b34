#pragma once

#include <vector>

#include "corvane/core/alignment.h"

namespace corvane::stars {

/// The stars of a field sorted into square cells of about one star each, to find those near a place.
class StarGrid {
public:
    /// Positions must be finite.
    explicit StarGrid(std::vector<Position> stars);

    const std::vector<Position>& Stars() const { return stars_; }
    int Count() const { return static_cast<int>(stars_.size()); }
    const Position& Star(int index) const { return stars_[static_cast<std::size_t>(index)]; }

    /// Index of the star nearest to a place, not farther than the radius; -1 for none.
    int Nearest(const Position& at, double radius) const;
    /// True within the rectangle around all stars, widened by a margin.
    bool Contains(const Position& at, double margin) const;
    /// Area of the field that such stars were scattered over, judged from how far they reach [square pixels].
    double Area() const;

private:
    struct CellRange {
        int first;
        int last;
    };

    int Cell(double offset, int cells) const;
    CellRange Cells(double offset, double radius, int cells) const;
    std::size_t CellOf(const Position& star) const;
    void Sort();

    std::vector<Position> stars_;
    double left_ = 0.0;
    double top_ = 0.0;
    double width_ = 0.0;
    double height_ = 0.0;
    double cellSize_ = 1.0; ///< [pixels]
    int columns_ = 1;
    int rows_ = 1;
    std::vector<int> begins_; ///< of each cell in order_, and the end of the last
    std::vector<int> order_;  ///< the stars, cell by cell
};

/// For each star of a list its nearest neighbours, the nearest first, of equal ones the first in the list.
std::vector<std::vector<int>> NearestNeighbours(const std::vector<Position>& stars, int count);

} // namespace corvane::stars
