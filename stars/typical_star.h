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
    double fit = 1.0; ///< sigma of the Gaussian that fits the samples over the width; below 1 where wings go beyond

    /// The full width at half maximum of the Gaussian that fits a star of that deviation [pixels].
    double Fwhm(double deviation) const;
};

/// Measures up to 200 of the brightest maxima that are neither trails nor narrower than light through optics can be,
/// each through a window of its own width, and takes the medians of those that have the width of stars (`CommonWidth`).
/// Faint ones are left out when there are enough others. Without any such maximum the width is a guess.
///
/// A window as wide as the star gives the width with little noise, but makes it too large where the star has wings. How
/// much is told by the fits of a Gaussian to the same stars (`FitGaussian`), within two FWHM.
TypicalStar MeasureTypicalStar(const CStlImage& image, int plane, const SkyMesh& sky, std::vector<Maximum> maxima);

} // namespace corvane::stars
