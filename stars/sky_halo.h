#pragma once

#include <optional>

#include "stars/sky_candidate.h"

namespace corvane::stars {

/// The best polynomial of a degree from `least` to `most`, at most 3, below a nebula with a halo: light that fades in
/// ellipses about a middle, so slowly that it may be above the sky as far as the frame goes. Nothing when none has more
/// than a merit.
///
/// What shines most, a tenth of the frame or more, is left out: nebulae are ragged there. Polynomial and halo are
/// fitted to the rest together, by steps towards less squares (D. Marquardt, Journal of the Society for Industrial and
/// Applied Mathematics 11, 431, 1963): a halo that falls exponentially, as that of galaxies, and one like a Gaussian.
/// Where the rest deviates by more than 1.75 times the noise of cells it has other structure, and where the cells do
/// not tell the polynomial from the halo nothing is taken for one.
std::optional<SkyCandidate> BestWithHalo(const SkyCells& sky, int least, int most, double merit);

} // namespace corvane::stars
