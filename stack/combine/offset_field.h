#pragma once

#include <array>
#include <vector>

#include "corvane/platform/export.h"
#include "stars/cell_grid.h"

namespace corvane::stack {

/// A value that changes evenly over a frame.
struct SlopingPlane {
    double level = 0.0;  ///< at (0, 0)
    double slopeX = 0.0; ///< for each pixel to the right
    double slopeY = 0.0; ///< and downwards

    double At(double x, double y) const { return level + slopeX * x + slopeY * y; }
};

/// A value at a place of a frame.
struct PlacedValue {
    double x;
    double y;
    double value;
};

/// The plane with the least sum of squared distances from values, one at least. It does not turn about values in a
/// line.
CORVANE_VISIBLE SlopingPlane FitPlane(const std::vector<PlacedValue>& values);

/// A sum that changes smoothly over the reference: a plane, and what is left of it between cells as a cubic spline, of
/// which no edges of cells show. Beyond the frame the plane goes on.
class CORVANE_VISIBLE OffsetField {
public:
    /// From values above a plane that are known in some cells at least. Those that stick out among their neighbours are
    /// replaced; what is left of the best plane goes on into unknown cells and is smoothed by 1, 2, 1 and then by the
    /// spline, which runs near its values and not through them: about 3.4 cells count in each direction.
    /// C. de Boor, A practical guide to splines, Springer 1978, chapter X.
    explicit OffsetField(stars::CellGrid cells, const SlopingPlane& plane = {});

    /// The sums at places along a row of the reference, the centre of the first sample at (0, 0). Those of one cell
    /// after each other cost least.
    void FillRow(double y, const double* x, int count, double* sums) const;
    double At(double x, double y) const
    {
        double sum = 0.0;
        FillRow(y, &x, 1, &sum);
        return sum;
    }

private:
    std::array<double, 4> ColumnsAbout(int cell, double y) const;
    void TakeOffPlane();
    void Smooth();

    SlopingPlane plane_;
    stars::CellGrid rest_;
};

} // namespace corvane::stack
