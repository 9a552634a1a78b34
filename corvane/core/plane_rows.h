#pragma once

#include <algorithm>
#include <cstddef>

#include "corvane/core/interpolation.h"
#include "corvane/core/truncate.h"

namespace corvane {

/// One plane of an image as a sampler sees it: whole, or the band of its rows that is in memory.
///
/// Interpolation right of the last column takes the sample that follows in storage: the next row's first, or behind the
/// plane's last row `afterLast`.
struct PlaneRows {
    const float* rows; ///< sample (0, firstRow)
    int width;
    int height;      ///< of the whole plane
    int firstRow;    ///< first row in memory
    float afterLast; ///< the sample that follows the plane in storage; its own last one when there is none

    const float* Row(int y) const { return rows + static_cast<std::ptrdiff_t>(y - firstRow) * width; }
    /// The sample that follows row y in storage.
    float After(int y) const { return y + 1 < height ? *Row(y + 1) : afterLast; }
};

/// Bilinear interpolation; at a whole position the sample itself, whatever its neighbours hold.
inline double Interpolate(double a0, double a1, double b0, double b1, double fx, double fy)
{
    const double between = Bilinear(a0, a1, b0, b1, fx, fy);
    const bool isWhole = (fx == 0.0) & (fy == 0.0);
    return isWhole ? a0 : between;
}

/// The two rows that a position lies between, and how far.
struct RowPair {
    int above;
    int below;
    double fraction;

    RowPair(double y, int height) : above(Truncate(y)), below(std::min(above + 1, height - 1)), fraction(y - above) {}
};

/// What bilinear interpolation makes of a position inside a plane.
inline double BilinearAt(const PlaneRows& plane, double x, double y)
{
    const RowPair rows(y, plane.height);
    const int ix = static_cast<int>(x);
    const float* const a = plane.Row(rows.above) + ix;
    const float* const b = plane.Row(rows.below) + ix;
    const bool hasNext = ix + 1 < plane.width;
    const float a1 = hasNext ? a[1] : plane.After(rows.above);
    const float b1 = hasNext ? b[1] : plane.After(rows.below);
    return Interpolate(*a, a1, *b, b1, x - ix, rows.fraction);
}

} // namespace corvane
