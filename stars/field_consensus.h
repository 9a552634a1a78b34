#pragma once

#include <optional>
#include <vector>

#include "stars/match_chance.h"
#include "stars/star_grid.h"
#include "stars/star_pairs.h"
#include "stars/star_patterns.h"

namespace corvane::stars {

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
