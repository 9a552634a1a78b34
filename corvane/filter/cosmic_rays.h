#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Every step-th sample of every step-th row.
struct SampleLattice {
    int left = 0;
    int top = 0;
    int step = 1;
};

/// How hits of cosmic rays are told from what the sky shows.
struct CosmicRayLimits {
    double sigma = 4.5;    ///< a hit stands out by more [standard deviations of the noise]
    double fraction = 0.3; ///< beside a hit, that part of it suffices [0..1]
    double limit = 5.0;    ///< a hit is so many times sharper than what lies beneath it
    int iterations = 4;    ///< most rounds; a hit that was found uncovers others
};

/// The noise of samples: its square is `variance`, which is above 0, and for light above the sky `perCount` times that
/// light more.
struct SampleNoise {
    double variance; ///< [raw units squared]
    double perCount; ///< raw units that one electron makes [raw units]
    double sky;      ///< [raw units]
};

/// A sample that a cosmic ray has hit.
struct CosmicHit {
    int x;
    int y;
    float mended; ///< what it becomes
};

/// Finds the samples of a plane that cosmic rays have hit, in a frame as the camera took it: their edges are sharper
/// than those of anything that comes through the optics. Undefined samples (blanks, NaN, infinities) neither count nor
/// are hits. `noises` is that of the plane, or of a mosaic of 2 x 2 filters, two rows and columns at least, those of
/// the filters, row by row. Returns hits row by row. Reports "Finding cosmic rays...", a step for each round.
///
/// A sample is split into 2 x 2 and the Laplacian of these taken, negative values left out. Their mean, by the noise
/// that the median of 5 x 5 tells, says how sharply the sample stands out (one that stands alone by its height), less
/// the median of that over 5 x 5. A hit does so by more than `sigma`, and by more than `limit` times what lies beneath:
/// the medians of 3 x 3 less the median of these over 7 x 7, by the noise, at least 0.01. Beside a hit a sample that
/// stands out by more than `sigma` is one, and beside these one that does by more than the fraction. Between rounds,
/// and in the end, a hit has the median of the samples in 5 x 5 that were not hit; without any it stays. All medians
/// are true ones.
///
/// The method alone would take rims of saturated stars, which are as sharp as hits, and what lies in the wings of
/// bright ones, where these medians cancel. So a hit must lie above the median of 5 x 5, too, by more than `sigma` of
/// the noise, and that median counts in place of the one over 7 x 7 where it is lower. P. G. van Dokkum, Cosmic-ray
/// rejection by Laplacian edge detection, Publications of the Astronomical Society of the Pacific 113, 1420, 2001.
///
/// In a mosaic of colour filters each filter's samples are an image of their own. A star covers few of them, but shines
/// in the samples of the others: what all show together by the medians of 3 x 3 and 7 x 7, each above its own sky, lies
/// beneath, too, where it is more.
CORVANE_VISIBLE std::vector<CosmicHit> FindCosmicRays(const CStlImage& image, int plane, const CosmicRayLimits& limits,
                                                      const std::vector<SampleNoise>& noises, const Run& run = {});

} // namespace corvane
