#pragma once

#include <vector>

#include "corvane/core/stl_image.h"
#include "stars/maxima.h"
#include "stars/sky_mesh.h"

namespace corvane::stars {

/// What most stars of a frame look like.
struct TypicalStar {
    double width = 1.3;      ///< standard deviation, as StarShape has it [pixels]: the window to measure all stars with
    double shortest = 1.3;   ///< the same across [pixels]
    double elongation = 1.0; ///< more than 1 where the telescope did not follow
    double wings = 1.0; ///< of the half-maximum's width over the window's; below 1 where wings go beyond a Gaussian

    /// The full width at half maximum of a star from its deviation, free of the pixel's own width [pixels].
    double Fwhm(double deviation) const;
};

/// Measures up to 200 of the brightest maxima that are neither trails nor narrower than light through optics can be,
/// each through a window of its own width, and takes the medians. Faint ones are left out when there are enough others.
/// Without any such maximum the width is a guess.
///
/// A window as wide as the star gives the width with little noise, but makes it too large where the star has wings, and
/// a wider one more so. The difference between both tells the wings: for Moffat profiles of exponents 2.5 to 5 the
/// logarithm of the error is 1.3 to 1.5 times that of the ratio of both widths. 1.625 serves FWHM of 2 pixels and more,
/// where the pixel's own width hides part of the wings; it leaves less than 3 % of error.
TypicalStar MeasureTypicalStar(const CStlImage& image, int plane, const SkyMesh& sky, std::vector<Maximum> maxima);

} // namespace corvane::stars
