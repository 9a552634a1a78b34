#pragma once

#include <optional>

#include "stars/stamp.h"

namespace corvane::stars {

constexpr double kFwhmPerSigma = 2.3548200450309493;

/// A round Gaussian on a level sky.
struct GaussianFit {
    double peak = 0.0; ///< above the sky [raw units]
    double x = 0.0;    ///< in the image
    double y = 0.0;
    double sigma =
        0.0;          ///< of the Gaussian that has the samples' values at their middles: the pixel's own width included
    double sky = 0.0; ///< above the stamp's [raw units]

    double Fwhm() const { return kFwhmPerSigma * sigma; }
};

/// Fits the samples about the middle of a stamp by least squares, all with the same weight, from a guess of sigma
/// [pixels] on; those within two FWHM of that guess, and no less than 3 pixels, undefined ones left out. Nothing where
/// that does not settle, or settles on what is no star: no peak above its sky, farther than half of the radius away, or
/// wider than the radius.
/// K. Levenberg, A method for the solution of certain non-linear problems in least squares, Quarterly of Applied
/// Mathematics 2, 164, 1944.
std::optional<GaussianFit> FitGaussian(const Stamp& stamp, double sigma);

} // namespace corvane::stars
