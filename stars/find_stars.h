#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stars {

/// A star of a field. Positions are in pixels, the centre of the first sample of the file's first row at (0, 0).
struct FieldStar {
    double x = 0.0; ///< centroid through a Gaussian window as wide as the frame's stars
    double y = 0.0;
    double peak = 0.0;       ///< brightest sample [raw units]
    double sky = 0.0;        ///< background at its place [raw units]
    double noise = 0.0;      ///< standard deviation of the sky there [raw units]
    double flux = 0.0;       ///< sum above the sky within two typical FWHM of the centroid [raw units]
    double fwhm = 0.0;       ///< full width at half maximum of the Gaussian that fits its samples [pixels]
    double elongation = 1.0; ///< longest over shortest width, 1 for round

    /// @name What speaks against measuring with it
    /// @{
    bool isSaturated = false; ///< its peak lies at the sensor's ceiling
    bool isHot = false;       ///< narrower than the optics allow: a hot pixel or a particle's hit
    bool isElongated = false; ///< a trail, a blend or a galaxy: longer or much wider than the frame's stars
    bool isAtEdge = false;    ///< part of it lies beyond the image or beyond defined samples; its shape counts no more
    bool isCrowded = false;   ///< another star of 0.15 of its brightness or more lies within two FWHM
    /// @}

    /// How far its brightest sample rises above the sky [raw units].
    double Excess() const { return peak - sky; }
    bool IsUsable() const { return !isSaturated && !isHot && !isElongated && !isAtEdge && !isCrowded; }
};

/// How stars are looked for.
struct FindOptions {
    double sigmas = 5.0;              ///< how far a star rises above the sky, in its standard deviations [1..1000]
    std::size_t limit = 10000;        ///< at most so many, the brightest; usable ones go before others
    std::optional<double> fullWell{}; ///< samples from here on are saturated; unset: told from the samples
};

/// What is seen in one plane of an image.
struct StarField {
    std::vector<FieldStar> stars; ///< by flux, the brightest first; those that are not usable too
    double sky = 0.0;             ///< median of the background [raw units]
    double noise = 0.0;           ///< median of its standard deviation [raw units]
    double fwhm = 0.0;            ///< that the usable stars have in common (`CommonWidth`) [pixels]; 0 without any
};

/// The plane in which stars are looked for: green of three.
inline int StarPlane(const CImage& image)
{
    return image.GetPlanes() > 1 ? 1 : 0;
}

/// Finds the stars of one plane.
///
/// Sky and noise are measured on a mesh (`MeasureSkyMesh`). A star is a local maximum of the frame, smoothed a little,
/// that rises `sigmas` times the smoothed noise above its sky: from about half so many times the noise of single
/// samples on for a FWHM of 3 pixels. It is measured through a Gaussian window as wide as the typical star, to the
/// photons' noise. Its width is that of the Gaussian that would be fitted to its samples by least squares, within 5 %
/// (FWHM 1.2 to 6 pixels): the blur of the pixel is part of it, and wings beyond a Gaussian widen it. Knots of a
/// galaxy, which are wider than stars, do not count, however many they are. Fluxes of a Moffat profile of exponent 4
/// are 1.5 % too small. Samples from a ceiling on that touch each other are one saturated star. Of the maxima along a
/// trail one is kept.
///
/// Blanks, NaN and infinities are no stars and make none about them. The list is empty for an image without samples or
/// without any defined one. Nothing of the size of the frame is held; the method is that of E. Bertin & S. Arnouts
/// (1996), Astronomy and Astrophysics Supplement 117, 393, in parts.
///
/// Throws Cancelled.
CORVANE_VISIBLE StarField FindFieldStars(const CStlImage& image, int plane, const FindOptions& options = {},
                                         const Run& run = {});

} // namespace corvane::stars
