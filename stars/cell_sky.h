#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "corvane/core/stl_image.h"

namespace corvane::stars {

/// What clipping finds in a cell.
struct CellSky {
    double level;
    double noise; ///< 0 when all that count are the same
    double step;  ///< between whole numbers, or close to 0
};

inline constexpr double kStepNoise = 0.28867513459481287; ///< 1 / sqrt(12) of a step, by rounding

/// A quarter of the samples of a cell that are looked at must be defined for its sky to be known.
inline bool AreEnough(std::size_t samples, std::size_t places)
{
    constexpr std::size_t kFewest = 4;
    return samples > 0 && kFewest * samples >= places;
}

/// The smallest difference of two sorted samples that are not the same; 0 when all are. It is 1 for whole numbers.
double StepOf(const std::vector<float>& sorted);

/// Level and noise of the samples of a cell, one at least, of such a step. They are sorted.
CellSky ClippedSky(const std::vector<float>& sorted, double step);

/// Calls visit(y, row) for the rows of an area that are looked at to know its sky, and returns how many samples they
/// have in it.
template <class Visit>
std::size_t VisitRowsOfCell(const CStlImage& image, int plane, const CRect& area, Visit visit)
{
    constexpr int kRowsOfCell = 9;
    const int height = static_cast<int>(area.bottom - area.top);
    const int step = std::max(1, height / kRowsOfCell) | 1; // odd: rows of both kinds of a mosaic filter count
    std::size_t places = 0;
    for (int y = static_cast<int>(area.top) + std::min(step, height) / 2; y < area.bottom; y += step) {
        visit(y, image.GetImageAdr(0, y, plane, 1));
        places += static_cast<std::size_t>(area.right - area.left);
    }
    return places;
}

} // namespace corvane::stars
