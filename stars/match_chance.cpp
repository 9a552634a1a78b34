#include "stars/match_chance.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include "stars/similarity.h"

namespace corvane::stars {

namespace {

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

} // namespace corvane::stars
