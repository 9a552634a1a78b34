#pragma once

#include <cstddef>
#include <vector>

#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"

namespace corvane::stars {

/// Values at the centres of equal cells that tile a frame, and bilinear between them; beyond the outer centres they
/// stay as they are there. NaN marks a cell of which nothing is known.
class CORVANE_VISIBLE CellGrid {
public:
    /// A frame of width x height [pixels, 1 or more] in cells of about `cell` pixels [1 or more]; all values NaN.
    CellGrid(int width, int height, int cell);

    int Width() const { return width_; }
    int Height() const { return height_; }
    int Columns() const { return columns_; }
    int Rows() const { return rows_; }
    /// @name Which cell a place of the frame lies at, counted from the centre of the first one
    /// @{
    double ColumnAt(double x) const { return (x + 0.5) * columns_ / width_ - 0.5; }
    double RowAt(double y) const { return (y + 0.5) * rows_ / height_ - 0.5; }
    /// @}
    /// @name Where the centre of a cell lies
    /// @{
    double XOf(int column) const { return (column + 0.5) * width_ / columns_ - 0.5; }
    double YOf(int row) const { return (row + 0.5) * height_ / rows_ - 0.5; }
    /// @}
    /// The samples of a cell; right and bottom are the first column and row outside.
    CRect Area(int column, int row) const;
    float& Value(int column, int row) { return values_[Index(column, row)]; }
    float Value(int column, int row) const { return values_[Index(column, row)]; }

    /// Gives every unknown cell the mean of its known neighbours, from the known ones outwards. Without any known cell
    /// all stay unknown.
    void FillGaps();
    /// Replaces a value that lies farther than three median deviations from the median of it and its neighbours by that
    /// median: a bright object fills the cell. Unknown ones do not count, and stay so.
    void RemoveOutliers();
    /// The median of all values; of an even number the upper of both in the middle.
    double Median() const;

    /// The value at a place, the centre of the first sample at (0, 0).
    double At(double x, double y) const;
    /// The values along a row of samples, as many as the frame is wide.
    void FillRow(int y, float* values) const;

private:
    std::size_t Index(int column, int row) const { return static_cast<std::size_t>(row) * columns_ + column; }
    /// The value at height y on the line through the centres of a column.
    double Between(int column, double y) const;

    int width_;
    int height_;
    int columns_;
    int rows_;
    std::vector<float> values_;
};

} // namespace corvane::stars
