#pragma once

#include <optional>
#include <vector>

#include "stars/star_grid.h"
#include "stars/star_pairs.h"
#include "stars/star_patterns.h"

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

/// The best of many guesses how one field lies on another: the one that stars agree with in the least likely number.
///
/// Two equal patterns make a guess. Stars around them that agree improve it and carry it farther, until it covers the
/// field or fails; what is left is judged by `MatchChance`. The principle is that of M. A. Fischler and R. C. Bolles
/// 1981, Communications of the ACM 24, 381, but all guesses are tried, in a fixed order.
class FieldConsensus {
public:
    /// Both fields have three stars or more.
    FieldConsensus(std::vector<Position> reference, std::vector<Position> frame, bool scale);

    const std::vector<Position>& Reference() const { return reference_; }
    const std::vector<Position>& Frame() const { return frame_.Stars(); }

    /// Follows the guess that two patterns are the same stars. False when further guesses are of no use.
    bool Try(const StarPattern& reference, const StarPattern& frame);

    const StarFit& Best() const { return best_; }
    /// Logarithm of the chance to do as well as the best guess; 0 before there is one.
    double LogChance() const { return logChance_; }
    /// Chance does as well as the best guess in fewer than one of a million pairs of fields.
    bool IsCertain() const;
    /// Half as many stars or more agree with a guess that is another one, and hardly by chance.
    bool IsAmbiguous() const { return rivalStars_ > 0 && 2 * rivalStars_ >= best_.pairs.size(); }

private:
    std::optional<Similarity> Grow(std::vector<StarPair> pairs);
    double LogChance(const StarFit& fit, int doubtful) const;
    double LogChance(const StarFit& fit) const;
    void Judge(StarFit fit);

    std::vector<Position> reference_;
    StarGrid frame_;
    bool scale_;
    MatchChance chance_;
    StarFit best_;
    double logChance_ = 0.0;
    std::size_t rivalStars_ = 0;
    int rivals_ = 0;
    std::size_t work_ = 0; ///< stars that were found while guesses grew
};

} // namespace corvane::stars
