#pragma once

#include <string>
#include <vector>

#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// A point of a curve: which output y an input x gives, both from 0 (black) to 1 (white).
struct Point {
    double x;
    double y;
};

/// The points of a curve, x rising.
using Points = std::vector<Point>;

/// Why the points make no curve; empty when they do: at least two, within 0 and 1, x rising.
CORVANE_VISIBLE std::string FaultOf(const Points& points);

/// Reads a curve from a text file: a point x y on each line, or only y, at equal distances from 0 to 1. Commas count as
/// blanks, # begins a comment. Throws Error that names the file and what is wrong with it.
CORVANE_VISIBLE Points ReadPoints(const std::string& file);

/// Samples a curve at `entries` equal distances from 0 to 1, at least 2: smoothly through the points, without going
/// beyond any two neighbours (F. N. Fritsch, J. Butland, A method for constructing local monotone piecewise cubic
/// interpolants, SIAM J. Sci. Stat. Comput. 5, 1984), and level before the first and behind the last.
CORVANE_VISIBLE std::vector<float> Tabulate(const Points& points, int entries);

} // namespace corvane::catalogue
