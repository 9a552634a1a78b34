#pragma once

namespace corvane::night {

// Positions are in pixels: the centre of the first sample is (0, 0), x to the right, y downwards along the rows.

/// A star as one light shows it.
struct Star {
    double x;
    double y;
    double flux;          ///< electrons that it would leave on a sensor of even response 1, all pixels together
    double fwhm;          ///< full width at half maximum [pixels]
    double redness = 0.0; ///< colour, -1 (blue) to 1 (red)
};

/// A straight streak with a Gaussian cross-section: a satellite that crosses the whole frame while the shutter is open.
struct Trail {
    double x0;
    double y0;
    double x1;
    double y1;
    double electronsPerPixel; ///< per pixel of its length
    double fwhm;              ///< across [pixels]
};

/// The track of a charged particle through the sensor. It leaves the same charge on equal lengths, unsmoothed.
struct CosmicHit {
    double x0;
    double y0;
    double x1;
    double y1;
    double electrons; ///< all of them together
};

} // namespace corvane::night
