#pragma once

#include <array>
#include <functional>
#include <vector>

#include "corvane/core/alignment.h"

namespace corvane::stars {

/// Three stars, and what of their triangle a shift and a turn leave as it is.
struct StarPattern {
    std::array<double, 3> key{}; ///< the sides, the longest first [pixels]; without scale the other two over it, and 0
    double tolerance = 0.0;      ///< how far errors of the positions may change the key
    std::array<Position, 3> stars{}; ///< each opposite to its side
    bool isClockwise = false;        ///< the sense of their order
};

/// What is asked of patterns.
struct PatternKind {
    bool anyScale = false;  ///< the key does not change with scale
    bool allOrders = false; ///< one for each order of the sides that errors may have made of another one
};

/// Triangles of each star with two of its nearest neighbours, sorted by key. Flat ones and small ones hardly tell a
/// turn and are left out.
///
/// The invariants are those of E. J. Groth 1986, Astronomical Journal 91, 1244, and F. G. Valdes et al. 1995,
/// Publications of the Astronomical Society of the Pacific 107, 1119; with neighbours only, the number of triangles
/// grows no faster than that of the stars.
std::vector<StarPattern> MakePatterns(const std::vector<Position>& stars, const PatternKind& kind);

/// Calls visit(pattern of the reference, pattern of the frame) for those that are the same within tolerance, until it
/// returns false, from the largest ones on. Of a pattern that very many others equal it tries the first ones only, so
/// that the work is bounded.
void MatchPatterns(const std::vector<StarPattern>& reference, const std::vector<StarPattern>& frame,
                   const std::function<bool(const StarPattern&, const StarPattern&)>& visit);

} // namespace corvane::stars
