#include "stars/field_consensus.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace corvane::stars {

namespace {

constexpr double kDistances[] = {0.25, 0.5, 1.0, 2.0, kFarthest}; // pixels, at which agreement is judged
constexpr double kMostChance = 1e-6 / 5 / 4; // of each distance, with and without mirror and saturated stars
constexpr double kRivalChance = 1e-3;        // what is less likely would hardly be there beside a true match
constexpr int kMostRivals = 20;
constexpr double kGuessError = 1.5;    // pixels, around the stars that a guess is made from
constexpr double kMostScale = 10.0;    // and its reciprocal the least
constexpr std::size_t kGrowRounds = 5; // of growing; each covers twice the area or more
constexpr std::size_t kCrowd = 24; // for each so many stars of both fields a guess has to find one more than its own
constexpr std::size_t kMostWork = 50000;
constexpr double kLineWidth = 2.0; // pixels to both sides
constexpr std::size_t kLineStars = 40;
constexpr int kNeighbours = 8;    // that a density is told from
constexpr double kSteepest = 1.5; // density of the distances of two stars in a square, times its side, is nowhere more

/// Density around each star, from the distance of its neighbours; the mean where there are too few.
std::vector<double> Densities(const StarGrid& field, double mean)
{
    std::vector<double> densities(field.Stars().size(), mean);
    if (field.Count() > kNeighbours) {
        const auto neighbours = NearestNeighbours(field.Stars(), kNeighbours);
        for (std::size_t i = 0; i < densities.size(); ++i) {
            const double squared = SquaredDistance(field.Stars()[i], field.Star(neighbours[i].back()));
            densities[i] = std::max(mean, kNeighbours / (std::numbers::pi * squared));
        }
    }
    return densities;
}

/// Logarithm of a bound of the probability that so many or more independent events happen when `expected` do on
/// average: the mean number of such choices of events, or from one event above the average on the tail of Poisson's
/// distribution, which is the heavier one (W. Hoeffding 1956, Annals of Mathematical Statistics 27, 713).
double LogTail(int events, double expected)
{
    double log = 0.0;
    for (int i = 1; i <= events; ++i) {
        log += std::log(expected / i);
    }
    if (events >= expected + 1.0) {
        log -= expected + std::log1p(-expected / (events + 1.0));
    }
    return std::min(log, 0.0);
}

std::size_t CountAgreeing(const std::vector<StarPair>& pairs, const Similarity& similarity)
{
    return static_cast<std::size_t>(std::count_if(pairs.begin(), pairs.end(), [&](const StarPair& pair) {
        return SquaredDistance(similarity.Map(pair.reference), pair.frame) <= kFarthest * kFarthest;
    }));
}

/// A zone about the stars of some pairs, twice as large as they are spread.
SearchZone ZoneAround(const std::vector<StarPair>& pairs)
{
    const Position centre = Centroid(pairs, &StarPair::reference);
    double sum = 0.0;
    for (const StarPair& pair : pairs) {
        sum += SquaredDistance(pair.reference, centre);
    }
    return {kGuessError, centre, 2.0 * std::sqrt(sum / static_cast<double>(pairs.size()))};
}

/// Most stars of the frame that lie on one line through two of the first ones.
int MostOnOneLine(const std::vector<StarPair>& pairs)
{
    const std::size_t ends = std::min(pairs.size(), kLineStars);
    std::ptrdiff_t most = 0;
    for (std::size_t i = 0; i < ends; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const Position p = pairs[i].frame;
            const Position along{pairs[j].frame.x - p.x, pairs[j].frame.y - p.y};
            const double reach = kLineWidth * std::sqrt(SquaredDistance(along, {0.0, 0.0}));
            if (reach == 0.0) {
                continue;
            }
            most =
                std::max(most, std::count_if(pairs.begin(), pairs.end(), [&](const StarPair& pair) {
                             return std::fabs((pair.frame.x - p.x) * along.y - (pair.frame.y - p.y) * along.x) <= reach;
                         }));
        }
    }
    return static_cast<int>(most);
}

} // namespace

MatchChance::MatchChance(int referenceCount, const StarGrid& frame, bool scale)
    : scale_(scale), logWays_(std::log(referenceCount * (referenceCount - 1.0) / 2.0) +
                              std::log(frame.Count() * (frame.Count() - 1.0))),
      others_((referenceCount - 2.0) / referenceCount), mean_(frame.Count() / frame.Area()),
      densities_(Densities(frame, mean_))
{
    const double sum = std::accumulate(densities_.begin(), densities_.end(), 0.0);
    side_ = frame.Count() / std::sqrt(sum);
}

double MatchChance::DensityAt(const StarGrid& frame, const Position& at) const
{
    const int nearest = frame.Nearest(at, 1.0 / std::sqrt(mean_));
    return nearest < 0 ? mean_ : densities_[static_cast<std::size_t>(nearest)];
}

double MatchChance::Log(int matched, double distance, double density) const
{
    // Lay the two matched stars onto each other that are farthest apart. Both were off by the distance at most, so this
    // moves the others by twice that at most, and they were off by the distance once more.
    const double reach = 3.0 * distance;
    const double chance = LogTail(matched - 2, others_ * density * std::numbers::pi * reach * reach);
    const double isLengthRight = scale_ ? 1.0 : std::min(1.0, 4.0 * distance * kSteepest / side_);
    return logWays_ + chance + std::log(isLengthRight);
}

FieldConsensus::FieldConsensus(std::vector<Position> reference, std::vector<Position> frame, bool scale)
    : reference_(std::move(reference)), frame_(std::move(frame)), scale_(scale),
      chance_(static_cast<int>(reference_.size()), frame_, scale)
{}

bool FieldConsensus::IsCertain() const
{
    return logChance_ < std::log(kMostChance);
}

std::optional<Similarity> FieldConsensus::Grow(std::vector<StarPair> pairs)
{
    const std::size_t crowds = std::min(reference_.size(), Frame().size()) / kCrowd;
    for (std::size_t round = 1; round <= kGrowRounds; ++round) {
        const Similarity guess = FitSimilarity(pairs, scale_);
        const double squaredScale = guess.a * guess.a + guess.b * guess.b;
        constexpr double kMostSquared = kMostScale * kMostScale;
        const bool isAllowed = squaredScale <= kMostSquared && squaredScale * kMostSquared >= 1.0; // NaN is not
        if (!isAllowed) {
            return {};
        }
        pairs = PairStars(reference_, frame_, guess, ZoneAround(pairs));
        work_ += pairs.size();
        if (pairs.size() < 3 + std::min(round, crowds)) {
            return {};
        }
    }
    return FitSimilarity(pairs, scale_);
}

/// Does not count so many of the stars.
double FieldConsensus::LogChance(const StarFit& fit, int doubtful) const
{
    double density = 0.0;
    for (const Position& star : reference_) {
        const Position at = fit.similarity.Map(star);
        density += frame_.Contains(at, kFarthest) ? chance_.DensityAt(frame_, at) : 0.0;
    }
    double least = 0.0;
    for (const double distance : kDistances) {
        const auto isNear = [&](const StarPair& pair) {
            return SquaredDistance(fit.similarity.Map(pair.reference), pair.frame) <= distance * distance;
        };
        const auto matched = static_cast<int>(std::count_if(fit.pairs.begin(), fit.pairs.end(), isNear));
        least = std::min(least, chance_.Log(matched - doubtful, distance, density));
    }
    return least;
}

double FieldConsensus::LogChance(const StarFit& fit) const
{
    const double all = LogChance(fit, 0);
    // What lies on one line, as the pieces of a trail or of a bad column do, agrees with other such lines too easily:
    // it counts as two stars.
    return all < std::log(kRivalChance) ? LogChance(fit, std::max(0, MostOnOneLine(fit.pairs) - 2)) : all;
}

void FieldConsensus::Judge(StarFit fit)
{
    const double logChance = LogChance(fit);
    const bool isOther = 2 * CountAgreeing(fit.pairs, best_.similarity) < fit.pairs.size();
    if (isOther && std::max(logChance, logChance_) < std::log(kRivalChance)) {
        rivalStars_ = std::max(rivalStars_, std::min(fit.pairs.size(), best_.pairs.size()));
        ++rivals_;
    }
    if (logChance < logChance_ || best_.pairs.empty()) {
        best_ = std::move(fit);
        logChance_ = logChance;
    }
}

bool FieldConsensus::Try(const StarPattern& reference, const StarPattern& frame)
{
    std::vector<StarPair> pairs;
    for (std::size_t i = 0; i < 3; ++i) {
        pairs.push_back({reference.stars[i], frame.stars[i]});
    }
    if (IsCertain() && CountAgreeing(pairs, best_.similarity) == pairs.size()) {
        return true;
    }
    if (const auto grown = Grow(std::move(pairs))) {
        StarFit fit = FitStars(reference_, frame_, *grown, kFarthest, scale_);
        if (!fit.pairs.empty()) {
            Judge(std::move(fit));
        }
    }
    return work_ < kMostWork && rivals_ < kMostRivals;
}

} // namespace corvane::stars
