#include "stars/choose_map.h"

#include <algorithm>
#include <cmath>

#include "stars/match_fields.h"
#include "stars/star_grid.h"
#include "stars/star_pairs.h"

namespace corvane::stars {

namespace {

constexpr MapModel kRicher[] = {MapModel::kAffine, MapModel::kHomography, MapModel::kDistortion};
constexpr int kMostRounds = 10;
constexpr int kOpenRounds = 3;            // in which stars may be off as far as they ever may
constexpr double kMostCornerError = 0.25; // pixels
constexpr double kCertain = 10.0;         // of Schwarz's criterion
constexpr double kLeastMove = 1.0 / 30.0; // pixels

/// A model and the stars that agree with it.
struct Candidate {
    MapModel model;
    MapFit fit;
    std::vector<StarPair> pairs;
};

double Rms(double squares, std::size_t count)
{
    return std::sqrt(squares / static_cast<double>(count));
}

bool IsBorne(const MapFit& fit, MapModel model, std::size_t stars)
{
    return stars >= 2 * static_cast<std::size_t>(UnknownsOf(model, true)) && fit.cornerError <= kMostCornerError;
}

/// Fits a model, beginning with the stars where a simpler mapping has them; nothing when they do not bear it.
std::optional<Candidate> Grow(const std::vector<Position>& reference, const StarGrid& frame, Mapping mapping,
                              MapModel model, const Area& area)
{
    double distance = kFarthest;
    Candidate candidate{model, {}, {}};
    for (int round = 0; round < kMostRounds; ++round) {
        candidate.pairs = PairStars(reference, frame, mapping, distance);
        const std::optional<MapFit> fit = FitMap(candidate.pairs, model, area);
        if (!fit) {
            return std::nullopt;
        }
        candidate.fit = *fit;
        mapping = fit->map;
        const double next = ClipDistance(Rms(fit->squares, candidate.pairs.size()));
        if (next == distance) {
            break;
        }
        distance = round + 1 < kOpenRounds ? kFarthest : next;
    }
    return IsBorne(candidate.fit, model, candidate.pairs.size()) ? std::optional(candidate) : std::nullopt;
}

/// The models that the stars bear, the simplest first.
std::vector<Candidate> Borne(const std::vector<Position>& reference, const StarGrid& frame, const Alignment& match,
                             const MapOptions& options)
{
    std::vector<Candidate> borne;
    Mapping mapping = match;
    for (const MapModel model : kRicher) {
        if (options.model && model > *options.model) {
            break;
        }
        if (std::optional<Candidate> candidate = Grow(reference, frame, mapping, model, options.area)) {
            mapping = model == MapModel::kAffine ? Mapping(candidate->fit.map) : mapping;
            borne.push_back(std::move(*candidate));
        }
    }
    return borne;
}

/// A model on trial: how far it leaves the stars, by unknowns.
struct Score {
    double squares;
    int unknowns;

    double Criterion(std::size_t stars) const
    {
        const double equations = 2.0 * static_cast<double>(stars);
        return equations * std::log(squares / equations) + unknowns * std::log(equations);
    }
};

/// The simplest model that is not significantly worse than a richer one, fitted to the stars of the richest.
ChosenMap Simplest(const std::vector<Candidate>& borne, const MapOptions& options)
{
    const std::vector<StarPair>& pairs = borne.back().pairs;
    const double rms = RmsDistance(pairs, FitSimilarity(pairs, options.scale));
    Score best{rms * rms * static_cast<double>(pairs.size()), UnknownsOf(MapModel::kSimilarity, options.scale)};
    ChosenMap chosen;
    for (const Candidate& candidate : borne) {
        const std::optional<MapFit> fit = FitMap(pairs, candidate.model, options.area);
        const Score score{fit ? fit->squares : best.squares, UnknownsOf(candidate.model, true)};
        const bool isCertain = score.Criterion(pairs.size()) < best.Criterion(pairs.size()) - kCertain;
        if (isCertain && Rms(best.squares - score.squares, pairs.size()) >= kLeastMove) {
            best = score;
            chosen = {candidate.model, fit->map, Rms(fit->squares, pairs.size()), static_cast<int>(pairs.size())};
        }
    }
    return chosen;
}

} // namespace

Area CommonArea(const Area& frame, const Area& reference, const Mapping& mapping)
{
    const Position corners[] = {mapping.Inverse({frame.left, frame.top}), mapping.Inverse({frame.right, frame.top}),
                                mapping.Inverse({frame.left, frame.bottom}),
                                mapping.Inverse({frame.right, frame.bottom})};
    const auto [left, right] = std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    const auto [top, bottom] = std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
    return {std::max(left, reference.left), std::max(top, reference.top), std::min(right, reference.right),
            std::min(bottom, reference.bottom)};
}

ChosenMap ChooseMap(const std::vector<FieldStar>& reference, const std::vector<FieldStar>& frame,
                    const Alignment& match, const MapOptions& options)
{
    if (options.model == MapModel::kSimilarity) {
        return {};
    }
    const std::vector<Candidate> borne =
        Borne(Positions(reference, false), StarGrid(Positions(frame, false)), match, options);
    if (borne.empty()) {
        return {};
    }
    if (!options.model) {
        return Simplest(borne, options);
    }
    const Candidate& richest = borne.back();
    return {richest.model, richest.fit.map, Rms(richest.fit.squares, richest.pairs.size()),
            static_cast<int>(richest.pairs.size())};
}

} // namespace corvane::stars
