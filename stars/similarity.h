#pragma once

#include <vector>

#include "corvane/core/alignment.h"

namespace corvane::stars {

/// The same star in two fields.
struct StarPair {
    Position reference;
    Position frame;
};

/// Shift, turn and scale from a reference to a frame: x' = x0 + a x + b y, y' = y0 - b x + a y.
struct Similarity {
    double a = 1.0; ///< scale times cosine of the turn
    double b = 0.0; ///< scale times sine
    double x0 = 0.0;
    double y0 = 0.0;

    Position Map(const Position& at) const { return {x0 + a * at.x + b * at.y, y0 - b * at.x + a * at.y}; }
};

/// Square of the distance between two places.
inline double SquaredDistance(const Position& p, const Position& q)
{
    return (p.x - q.x) * (p.x - q.x) + (p.y - q.y) * (p.y - q.y);
}

/// Mean position; the list must not be empty.
Position Centroid(const std::vector<StarPair>& pairs, Position StarPair::*field);

/// The similarity with the least sum of squared distances in the frame, with scale 1 unless `scale` is set. Pairs that
/// do not tell the turn, all at one place, give none. Closed form: S. Umeyama 1991, IEEE Transactions on Pattern
/// Analysis and Machine Intelligence 13, 376.
Similarity FitSimilarity(const std::vector<StarPair>& pairs, bool scale);

/// Root mean square distance of the pairs, in the frame; 0 for none.
double RmsDistance(const std::vector<StarPair>& pairs, const Similarity& similarity);

} // namespace corvane::stars
