#pragma once

#include <vector>

#include "stars/star_grid.h"

namespace corvane::stars {

/// How likely it is that stars of two fields agree by chance.
///
/// The judgement is that of L. Moisan and B. Stival 2004, International Journal of Computer Vision 57, 201: the number
/// of ways to lay the reference onto the frame by two stars, times the probability that so many others then find a star
/// of the frame near them. It bounds the probability that any way at all does so well in fields that have nothing in
/// common, however the way was found. Stars are taken as scattered with the density that the frame has around them.
class MatchChance {
public:
    /// There must be stars in both.
    MatchChance(int referenceCount, const StarGrid& frame, bool scale);

    /// Density of the frame's stars about a place, its mean at least [per square pixel]. The frame is the same again.
    double DensityAt(const StarGrid& frame, const Position& at) const;

    /// Logarithm of the bound for `matched` stars not farther than `distance` [pixels] from their places, when
    /// `density` is the sum of DensityAt over the stars of the reference that lie within the frame.
    double Log(int matched, double distance, double density) const;

private:
    bool scale_;
    double logWays_;                ///< to choose two stars of each field
    double others_;                 ///< share of the reference's stars without these two
    double mean_;                   ///< density [per square pixel]
    double side_;                   ///< of a square that holds the frame's stars at their typical density [pixels]
    std::vector<double> densities_; ///< around each star of the frame [per square pixel]
};

} // namespace corvane::stars
