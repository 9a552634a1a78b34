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
    double excess; ///< peak above the sky
    bool isSpread; ///< as all light that came through the optics: three direct neighbours hold a good part
    bool isRound;  ///< falls off along every line through it; a trail does not along its own
    bool isSaturated = false;

    /// Neither a hot pixel, a particle's track nor a satellite's trail.
    bool IsPoint() const { return isSpread && isRound; }
};

/// Measures the sky of one plane; blanks and NaN are passed over. Noise 0 when nothing is left.
Sky MeasureSky(const CStlImage& image, int plane);

/// Local maxima of one plane that rise 8 sigma or more above the sky, the brightest first, at most `limit`. NaN is no
/// star, nor are blanks.
std::vector<Star> FindStars(const CStlImage& image, int plane, const Sky& sky, std::size_t limit);

/// Lowers what rises 8 sigma above the sky, but along some line through it has no neighbour that holds a good part (hot
/// pixels, tracks of particles), to its brightest neighbour on that line.
void RemoveHits(CStlImage& image, int plane, const Sky& sky);

} // namespace corvane::stack
