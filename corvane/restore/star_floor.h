#pragma once

#include <vector>

#include "corvane/restore/lucy_engine.h"

namespace corvane {

/// Below which a restored plane may not fall near stars, so that these get no dark rings; 0 elsewhere.
///
/// What is beneath a star is told by openings (J. Serra, Image Analysis and Mathematical Morphology, 1982): of the
/// plane, smoothed a little, the greatest of the least samples within one and a half widths of the point-spread
/// function, so that gradients and whatever is wider stay in it; or within three widths along a line, of eight
/// directions the greatest (P. Soille, H. Talbot, IEEE Transactions on Pattern Analysis and Machine Intelligence 23,
/// 1313 (2001)), so that the arms of galaxies stay, which are longer than wide. Where the plane rises more than 10
/// deviations of the sky above that is a star, and the floor lies below the opening by 0.0025 of that rise, as far as
/// rings go. Farther away it falls to 0 step by step: an edge would leave a trace.
std::vector<float> StarFloor(const float* data, const LucyJob& job, int threads);

} // namespace corvane
