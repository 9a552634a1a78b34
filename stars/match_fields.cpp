#include "stars/match_fields.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "corvane/core/display_scale.h"
#include "corvane/core/turn.h"
#include "stars/field_consensus.h"
#include "stars/star_grid.h"
#include "stars/star_pairs.h"
#include "stars/star_patterns.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kLeastStars = 3;
constexpr std::size_t kBrightest = 240;   // that are searched for patterns
constexpr std::size_t kFirstDepth = 30;   // of these are searched first
constexpr std::size_t kRatio = 3;         // a field with more stars than so many times the other's shows fainter ones
constexpr std::size_t kFewStars = 12;     // so few are helped by saturated ones
constexpr double kFarthestPosition = 1e6; // pixels

std::vector<Position> First(const std::vector<Position>& stars, std::size_t count)
{
    return {stars.begin(), stars.begin() + static_cast<std::ptrdiff_t>(std::min(count, stars.size()))};
}

void TryPatterns(FieldConsensus& consensus, const std::vector<Position>& reference, const std::vector<Position>& frame,
                 bool scale, const Run& run)
{
    MatchPatterns(MakePatterns(reference, {.anyScale = scale, .allOrders = false}),
                  MakePatterns(frame, {.anyScale = scale, .allOrders = true}),
                  [&](const StarPattern& r, const StarPattern& f) {
                      run.ThrowIfCancelled();
                      return consensus.Try(r, f);
                  });
}

std::vector<Position> Side(const std::vector<StarPair>& pairs, Position StarPair::*field)
{
    std::vector<Position> stars;
    std::transform(pairs.begin(), pairs.end(), std::back_inserter(stars),
                   [=](const auto& pair) { return pair.*field; });
    return stars;
}

/// Tries the patterns of the brightest stars, then those of more and more stars, until a fit is certain; and last those
/// of the stars that agree, because a pattern that repeats itself would fit elsewhere, too.
void Search(std::vector<FieldConsensus>& senses, bool scale, const Run& run)
{
    const auto isCertain = [](const FieldConsensus& sense) { return sense.IsCertain(); };
    const std::size_t most = std::max(senses[0].Reference().size(), senses[0].Frame().size());
    std::size_t depth = kFirstDepth / 2;
    do {
        depth *= 2;
        for (FieldConsensus& sense : senses) {
            TryPatterns(sense, First(sense.Reference(), depth), First(sense.Frame(), depth), scale, run);
        }
    } while (depth < most && std::none_of(senses.begin(), senses.end(), isCertain));
    for (FieldConsensus& sense : senses) {
        const auto pairs = sense.Best().pairs;
        TryPatterns(sense, Side(pairs, &StarPair::reference), Side(pairs, &StarPair::frame), scale, run);
    }
}

FieldMatch NoMatch(std::string reason)
{
    FieldMatch match;
    match.reason = std::move(reason);
    return match;
}

FieldMatch TooFew(const char* field, std::size_t stars)
{
    return NoMatch(std::string("the ") + field + " has " + std::to_string(stars) + " usable " +
                   (stars == 1 ? "star" : "stars") + ", and 3 are the least");
}

/// What a fit is in terms of `Alignment`.
FieldMatch Describe(const StarFit& fit, const CfPoint& centre, bool scale)
{
    const auto& [a, b, x0, y0] = fit.similarity;
    const double squared = a * a + b * b;
    const Position moved = fit.similarity.Map({centre.x, centre.y});
    const double x = moved.x - centre.x;
    const double y = moved.y - centre.y;
    FieldMatch match;
    match.dx = -(a * x - b * y) / squared;
    match.dy = -(b * x + a * y) / squared;
    match.angle = Direction(b, a) / kDegree;
    match.scale = scale ? std::sqrt(squared) : 1.0;
    match.residual = RmsDistance(fit.pairs, fit.similarity);
    match.stars = static_cast<int>(fit.pairs.size());
    return match;
}

/// Why a search has not led to a match; empty when it has.
std::string Judge(const std::vector<FieldConsensus>& senses, const FieldConsensus& best)
{
    const std::size_t stars = best.Best().pairs.size();
    if (stars == 0) {
        return "no pattern of stars is common to both";
    }
    if (!best.IsCertain()) {
        return "only " + std::to_string(stars) + " stars agree, as may be by chance";
    }
    if (best.IsAmbiguous() || (senses.front().IsCertain() && senses.back().IsCertain() && senses.size() > 1)) {
        return "the pattern of the stars repeats itself and fits in several places";
    }
    return {};
}

/// The field that a mirror shows.
std::vector<Position> Mirrored(std::vector<Position> stars, const CfPoint& centre)
{
    for (Position& star : stars) {
        star.x = 2.0 * centre.x - star.x;
    }
    return stars;
}

FieldMatch MatchPositions(const std::vector<Position>& reference, const std::vector<Position>& frame,
                          const CfPoint& centre, const MatchOptions& options, const Run& run)
{
    const auto brightest = First(reference, std::min(kBrightest, kRatio * frame.size()));
    const auto others = First(frame, std::min(kBrightest, kRatio * reference.size()));
    std::vector<FieldConsensus> senses;
    senses.emplace_back(brightest, others, options.scale);
    if (options.mirror) {
        senses.emplace_back(brightest, Mirrored(others, centre), options.scale);
    }
    Search(senses, options.scale, run);
    const bool isMirrored = senses.back().LogChance() < senses.front().LogChance();
    const FieldConsensus& best = isMirrored ? senses.back() : senses.front();
    if (std::string reason = Judge(senses, best); !reason.empty()) {
        return NoMatch(std::move(reason));
    }
    const auto& [similarity, pairs] = best.Best();
    const StarGrid all(isMirrored ? Mirrored(frame, centre) : frame);
    const double distance = ClipDistance(RmsDistance(pairs, similarity));
    FieldMatch match = Describe(FitStars(reference, all, similarity, distance, options.scale), centre, options.scale);
    match.isMirrored = isMirrored;
    return match;
}

} // namespace

std::vector<Position> Positions(const std::vector<FieldStar>& stars, bool withSaturated)
{
    std::vector<Position> positions;
    for (FieldStar star : stars) {
        star.isSaturated &= !withSaturated;
        if (star.IsUsable() && std::fabs(star.x) < kFarthestPosition && std::fabs(star.y) < kFarthestPosition) {
            positions.push_back({star.x, star.y});
        }
    }
    return positions;
}

FieldMatch MatchFields(const std::vector<FieldStar>& reference, const std::vector<FieldStar>& frame,
                       const CfPoint& centre, const MatchOptions& options, const Run& run)
{
    FieldMatch match;
    for (const bool withSaturated : {false, true}) {
        const auto from = Positions(reference, withSaturated);
        const auto to = Positions(frame, withSaturated);
        if (from.size() < kLeastStars) {
            match = TooFew("reference", from.size());
        } else if (to.size() < kLeastStars) {
            match = TooFew("frame", to.size());
        } else {
            match = MatchPositions(from, to, centre, options, run);
        }
        if (match.reason.empty() || std::min(from.size(), to.size()) > kFewStars) {
            break;
        }
    }
    return match;
}

} // namespace corvane::stars
