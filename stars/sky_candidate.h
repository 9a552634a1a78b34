#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "stars/sky_cells.h"

namespace corvane::stars {

inline constexpr double kSkyReach = 3.0; ///< deviations that a cell of the sky may lie off
/// A polynomial fitted to cells of the sky, which cells those are, and how well that goes.
struct SkyCandidate {
    SkyCells sky;
    SkyPolynomial polynomial;
    double deviation = 0.0; ///< of what lies below the polynomial
    double merit = 0.0;     ///< cells of the sky over that, those far below it counting against it
};

/// What the sky about a cell must be like for it to be sky: the median of the cells so far around lies at most so many
/// deviations above it, about three times its noise.
struct SkyAround {
    int around;   ///< cells either way
    double reach; ///< deviations
};

inline constexpr int kMostAround = 4; ///< cells
inline constexpr SkyAround kAnyAround{0, std::numeric_limits<double>::infinity()};
inline constexpr SkyAround kNearAround{2, 0.75};
inline constexpr SkyAround kWideAround{kMostAround, 0.42};

using CellTest = std::function<bool(const SkyCell&)>;

bool IsKnown(const SkyCell& cell);

/// The median of the noise of the cells that are known.
double NoiseOf(const std::vector<SkyCell>& cells);

/// Of a polynomial at any place, in that of a cell: polynomials of the whole frame have up to 155 over the number of
/// cells in its corners. Below a nebula that fills half of it they are known less well, yet far better than the nebula
/// would tell them.
double MostVarianceOf(const std::vector<SkyCell>& cells);

/// What is left of each cell above a polynomial.
std::vector<double> RestOf(const std::vector<SkyCell>& cells, const SkyPolynomial& polynomial);

/// Says anew which cells are sky; true when one has changed.
bool ChooseSky(SkyCandidate& candidate, const SkyAround& skyAround);

/// Fits the polynomial of a degree to what is sky; false when that does not tell it.
bool FitToSky(SkyCandidate& candidate, int degree);

/// The polynomial with a small part below it of the cells that `counts` holds for, by weights that make distances of
/// their squares: what is above may be nebula.
SkyPolynomial FitByRank(const SkyCells& sky, int degree, const CellTest& counts);

/// Takes another candidate for the best one when it is so many times better.
void KeepBetter(std::optional<SkyCandidate>& best, std::optional<SkyCandidate> other, double factor);

} // namespace corvane::stars
