#pragma once

#include <limits>
#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/sky_polynomial.h"

namespace corvane::stars {

/// A part of a frame that shows sky, or something before it.
struct SkyCell {
    double x = 0.0; ///< its middle [pixels]
    double y = 0.0;
    double above =
        std::numeric_limits<double>::quiet_NaN(); ///< its level above polynomial and halo; NaN where it is not known
    double halo = 0.0;                            ///< faint light about a nebula
    double noise = 0.0;                           ///< standard deviation of the level by that of its samples
    double step = -1.0;                           ///< between whole numbers; below 0 while it is not known
    bool isSky = false;                           ///< nothing in it stands above its surroundings
};

/// The sky of a plane: a polynomial, and what there is above it in cells.
struct SkyCells {
    SkyPolynomial polynomial;
    int degree = -1; ///< of the polynomial; below 0 when nothing is known of the sky
    int columns = 0;
    int rows = 0;
    std::vector<SkyCell> cells{}; ///< row after row
};

/// Tells the sky of a plane from what stands before it, and fits a polynomial to it: of a degree that is given or the
/// highest below it which the cells of the sky tell at every place, or of the lowest, 1 to 4, that the sky needs.
///
/// The frame is looked at in about `across` x `across` cells, of 8 pixels at least, each of which comes to a level as
/// in `MeasureSkyMesh`, so stars hardly count. A first guess is the polynomial that leaves 15 % of the cells below it:
/// nebulae and galaxies may fill most of the frame. From there on the polynomial is fitted to the cells that lie within
/// 3 standard deviations of the one before, the deviation being that of the cells below it: so it goes up to what most
/// of the sky has, and stops where nebulae begin. Then cells with faint light, whose 25 neighbours lie 0.75 deviations
/// above it by their median, are left out, too. Guesses by each half of the frame lead elsewhere where a nebula has an
/// edge; that with the most cells of the sky over their deviation is taken, cells far below it counting against it. Of
/// that one fainter light is left out: cells whose 81 neighbours lie 0.42 deviations above it.
///
/// Then all is measured again above the polynomial, so that what is bent within a cell does not count.
///
/// A nebula that fades slowly is above the sky as far as the frame goes, and no cell shows sky alone. So at last
/// polynomials up to the third degree below a nebula with a halo (`BestWithHalo`) are tried, and the best is taken when
/// it is 1.2 times better: its cells, but for those left out, then hold sky and halo, to their noise.
///
/// Of the run its threads count, and it may be cancelled. Throws Cancelled.
CORVANE_VISIBLE SkyCells FitSkyCells(const CStlImage& image, int plane, std::optional<int> degree, int across,
                                     const Run& run);

} // namespace corvane::stars
