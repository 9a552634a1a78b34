#include "stars/star_pairs.h"

#include <algorithm>
#include <cmath>

namespace corvane::stars {

namespace {

constexpr double kPairClip = 2.5; // root mean squares: of stars that belong 0.2 % are beyond
constexpr double kNearest = 0.5;  // pixels
constexpr int kPairRounds = 10;
constexpr std::size_t kLeast = 3; // pairs: two fit each other always

/// Pairs by where `place` has the stars of the reference.
template <class Place>
std::vector<StarPair> PairBy(const std::vector<Position>& reference, const StarGrid& frame, Place place,
                             const SearchZone& zone)
{
    constexpr std::size_t kNone = ~std::size_t{0};
    std::vector<std::size_t> owners(frame.Stars().size(), kNone);
    const auto distance = [&](std::size_t star, int found) {
        return SquaredDistance(place(reference[star]), frame.Star(found));
    };
    for (std::size_t i = 0; i < reference.size(); ++i) {
        const double radius = zone.Radius(reference[i]);
        const Position at = place(reference[i]);
        const bool isPlaced = radius >= 0.0 && std::isfinite(at.x) && std::isfinite(at.y);
        const int found = isPlaced ? frame.Nearest(at, radius) : -1;
        if (found >= 0) {
            std::size_t& owner = owners[static_cast<std::size_t>(found)];
            owner = owner == kNone || distance(i, found) < distance(owner, found) ? i : owner;
        }
    }
    std::vector<StarPair> pairs;
    for (std::size_t j = 0; j < owners.size(); ++j) {
        if (owners[j] != kNone) {
            pairs.push_back({reference[owners[j]], frame.Stars()[j]});
        }
    }
    return pairs;
}

} // namespace

double SearchZone::Radius(const Position& star) const
{
    const double squared = SquaredDistance(star, centre);
    if (squared > 4.0 * size * size) {
        return -1.0;
    }
    return tolerance * std::max(1.0, std::sqrt(squared) / size);
}

std::vector<StarPair> PairStars(const std::vector<Position>& reference, const StarGrid& frame,
                                const Similarity& similarity, const SearchZone& zone)
{
    return PairBy(
        reference, frame, [&](const Position& star) { return similarity.Map(star); }, zone);
}

std::vector<StarPair> PairStars(const std::vector<Position>& reference, const StarGrid& frame, const Mapping& mapping,
                                double distance)
{
    return PairBy(reference, frame, [&](const Position& star) { return mapping.Map(star.x, star.y); },
                  {.tolerance = distance});
}

double ClipDistance(double rms)
{
    return std::clamp(kPairClip * rms, kNearest, kFarthest);
}

StarFit FitStars(const std::vector<Position>& reference, const StarGrid& frame, const Similarity& guess,
                 double distance, bool scale)
{
    StarFit fit{guess, {}};
    for (int round = 0; round < kPairRounds; ++round) {
        fit.pairs = PairStars(reference, frame, fit.similarity, {.tolerance = distance});
        if (fit.pairs.size() < kLeast) {
            return {guess, {}};
        }
        fit.similarity = FitSimilarity(fit.pairs, scale);
        const double next = ClipDistance(RmsDistance(fit.pairs, fit.similarity));
        if (next == distance) {
            break;
        }
        distance = next;
    }
    return fit;
}

} // namespace corvane::stars
