#pragma once

#include <limits>
#include <vector>

#include "corvane/core/mapping.h"
#include "stars/similarity.h"
#include "stars/star_grid.h"

namespace corvane::stars {

/// How far a star may be from where it should be: the same everywhere, or about a place where a fit is good; outwards
/// from there more and more, and in the end no star counts.
struct SearchZone {
    double tolerance = 0.0;                                ///< [pixels of the frame]
    Position centre{0.0, 0.0};                             ///< [pixels of the reference]
    double size = std::numeric_limits<double>::infinity(); ///< the tolerance grows from here on; the end is at twice it

    /// Farthest that a star of the reference may be off [pixels]; negative outside.
    double Radius(const Position& star) const;
};

/// Pairs stars of the reference with those of the frame that are nearest to where the similarity maps them. No star is
/// used twice: the nearer one takes it.
std::vector<StarPair> PairStars(const std::vector<Position>& reference, const StarGrid& frame,
                                const Similarity& similarity, const SearchZone& zone);

/// The same of stars where a mapping has them, none farther off than a distance [pixels of the frame].
std::vector<StarPair> PairStars(const std::vector<Position>& reference, const StarGrid& frame, const Mapping& mapping,
                                double distance);

/// Stars that agree, and their similarity of least squares.
struct StarFit {
    Similarity similarity;
    std::vector<StarPair> pairs;
};

/// How far a star may ever be off; a distortion of the optics may take so much [pixels].
inline constexpr double kFarthest = 3.0;

/// How far stars may be off when their root mean square distance is `rms`: 2.5 times that, half a pixel at least.
double ClipDistance(double rms);

/// Pairs and fits in turn, leaving out what lies beyond ClipDistance, until that does not change. `distance` is what
/// the first turn allows [pixels]. No pairs when fewer than three are left.
StarFit FitStars(const std::vector<Position>& reference, const StarGrid& frame, const Similarity& guess,
                 double distance, bool scale);

} // namespace corvane::stars
