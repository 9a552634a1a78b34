#pragma once

#include <vector>

namespace corvane::stars {

/// The width that a frame's stars have in common, among widths of whatever else is round: knots of a galaxy may be
/// many, but nothing that came through the optics is narrower than a star.
///
/// Widths within a tenth of each other are a group. The narrowest one that has half of the largest group's members
/// is where the stars are; from there the median of all within a quarter of it is followed until it stays. 0 for no
/// widths; NaN is not allowed.
double CommonWidth(std::vector<double> widths);

/// True for a width within a quarter of the common one.
bool IsCommon(double width, double common);

} // namespace corvane::stars
