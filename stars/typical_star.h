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
    bool isSparse = false; ///< so narrow that moments depend on where in its pixel a star lies: fits tell its width

    /// The full width at half maximum of the Gaussian that fits a star of that deviation [pixels].
    double Fwhm(double deviation) const;
};

/// The least sigma of a Gaussian that fits a star of a peak above the sky: those that fit hits of one sample or of two
/// have up to 0.35 pixels, and the noise about faint ones makes them look wider.
double LeastSigma(double noise, double peak);

/// Measures up to 200 of the brightest maxima that are neither trails nor hits (`LeastSigma`), each through a window of
/// its own width and by the fit of a Gaussian (`FitGaussian`), and takes the medians of those whose fits have the width
/// of stars (`CommonWidth`). Faint ones are left out when there are enough others. Without any such maximum the width
/// is a guess.
///
/// A window as wide as the star gives the width with little noise, but makes it too large where the star has wings: how
/// much is told by the fits. Of the run only its threads count.
TypicalStar MeasureTypicalStar(const CStlImage& image, int plane, const SkyMesh& sky, std::vector<Maximum> maxima,
                               const Run& run);

} // namespace corvane::stars
