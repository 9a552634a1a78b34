#pragma once

#include <optional>

#include "stars/stamp.h"

namespace corvane::stars {

/// What a Gaussian window shows of the object in a stamp. Widths are standard deviations of the Gaussian that would
/// show the same through the window, the pixel's own width included [pixels].
struct StarShape {
    double x = 0.0; ///< centroid, in the image
    double y = 0.0;
    double longest = 0.0;
    double shortest = 0.0;
    double lost = 0.0; ///< share of the window's weight on undefined samples [0..1]

    double Width() const; ///< geometric mean of both
    /// The longest over the shortest, neither below the deviation of a pixel; 1 or more.
    double Elongation() const;
};

/// Measures the object at the middle of a stamp, above the sky, through a round Gaussian window of a standard deviation
/// [pixels, above 0] that follows its centroid; nothing when that goes 1.5 deviations from the middle or when there is
/// no light.
///
/// The centroid is the one that the window gives about itself, iterated to 0.0005 pixel (E. Bertin & S. Arnouts 1996,
/// Astronomy and Astrophysics Supplement 117, 393). Of the second moments the window's share is taken away, which is
/// exact for a Gaussian: 1 / own variance = 1 / seen variance - 1 / window variance.
std::optional<StarShape> MeasureShape(const Stamp& stamp, double window);

/// Sum of a stamp's samples within a radius [pixels] of a place of the image, those on the circle by their share.
double ApertureSum(const Stamp& stamp, double x, double y, double radius);

} // namespace corvane::stars
