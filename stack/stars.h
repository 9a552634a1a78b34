#pragma once

#include <vector>

#include "corvane/core/stl_image.h"

namespace corvane::stack {

/// The sky of an image: its level and noise, by median and median deviation of samples spread over it.
struct Sky {
    double level = 0.0;
    double noise = 0.0; ///< standard deviation
};

/// A local maximum well above the sky.
struct Star {
    int x;
    int y;
    double excess;        ///< peak above the sky
    int brightNeighbours; ///< of the four direct neighbours, those that hold a good part of the peak
    bool isSaturated = false;

    /// Light that came through the optics spreads; a hot pixel's or a particle's does not.
    bool IsSpread() const { return brightNeighbours >= 3; }
};

/// Measures the sky of one plane; blanks and NaN are passed over. Noise 0 when nothing is left.
Sky MeasureSky(const CStlImage& image, int plane);

/// Local maxima of one plane that rise 8 sigma or more above the sky, the brightest first, at most `limit`. NaN is no
/// star, nor are blanks.
std::vector<Star> FindStars(const CStlImage& image, int plane, const Sky& sky, std::size_t limit);

/// How many of the four direct neighbours of a sample inside the image hold 15 % or more of its excess over the sky.
int CountBrightNeighbours(const CStlImage& image, int plane, int x, int y, double sky);

/// Replaces what rises 8 sigma above the sky without spreading (hot pixels) by the mean of its neighbours.
void RemoveHotPixels(CStlImage& image, int plane, const Sky& sky);

} // namespace corvane::stack
