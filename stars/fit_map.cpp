#include "stars/fit_map.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "stars/least_squares.h"

namespace corvane::stars {

namespace {

constexpr int kFitRounds = 20;
constexpr double kSettledCorner = 1e-10; // pixels that a step moves a corner by

std::size_t TermsOf(MapModel model)
{
    return model == MapModel::kDistortion ? FieldMap::kTerms : FieldMap::kLinear;
}

/// The coefficients that a model leaves free: those of x, those of y, the tilts.
std::vector<double*> FreeOf(FieldMap& map, MapModel model)
{
    std::vector<double*> free;
    for (auto* const terms : {&map.x, &map.y}) {
        for (std::size_t i = 0; i < TermsOf(model); ++i) {
            free.push_back(&(*terms)[i]);
        }
    }
    if (model == MapModel::kHomography) {
        free.insert(free.end(), {&map.tiltU, &map.tiltV});
    }
    return free;
}

/// How each free coefficient moves a place of the reference in the frame.
struct Slopes {
    std::vector<double> x;
    std::vector<double> y;

    Slopes(const FieldMap& map, MapModel model, const Position& place)
    {
        const double u = (place.x - map.x0) / map.size;
        const double v = (place.y - map.y0) / map.size;
        const double below = 1.0 + map.tiltU * u + map.tiltV * v;
        const std::size_t count = TermsOf(model);
        const double terms[] = {1.0, u, v, u * u, u * v, v * v, u * u * u, u * u * v, u * v * v, v * v * v};
        x.assign(2 * count, 0.0);
        y.assign(2 * count, 0.0);
        for (std::size_t i = 0; i < count; ++i) {
            x[i] = y[count + i] = terms[i] / below;
        }
        if (model == MapModel::kHomography) {
            const Position at = Mapping(map).Map(place.x, place.y);
            x.insert(x.end(), {-at.x * u / below, -at.x * v / below});
            y.insert(y.end(), {-at.y * u / below, -at.y * v / below});
        }
    }
};

/// The equations of a step from a map towards less squares.
LeastSquares StepFrom(const FieldMap& map, const std::vector<StarPair>& pairs, MapModel model)
{
    LeastSquares system(static_cast<std::size_t>(UnknownsOf(model, true)));
    const Mapping mapping(map);
    for (const auto& [reference, frame] : pairs) {
        const Position at = mapping.Map(reference.x, reference.y);
        const Slopes slopes(map, model, reference);
        system.Add(slopes.x, frame.x - at.x);
        system.Add(slopes.y, frame.y - at.y);
    }
    return system;
}

double SquaresOf(const FieldMap& map, const std::vector<StarPair>& pairs)
{
    double sum = 0.0;
    const Mapping mapping(map);
    for (const auto& [reference, frame] : pairs) {
        sum += SquaredDistance(mapping.Map(reference.x, reference.y), frame);
    }
    return sum;
}

double CornerError(const LeastSquares& system, const MapFit& fit, std::size_t equations, MapModel model,
                   const Area& area)
{
    double most = 0.0;
    for (const Position corner : {Position{area.left, area.top}, Position{area.right, area.top},
                                  Position{area.left, area.bottom}, Position{area.right, area.bottom}}) {
        const Slopes slopes(fit.map, model, corner);
        most = std::max(most, system.Variance(slopes.x) + system.Variance(slopes.y));
    }
    const double freedom = static_cast<double>(equations) - UnknownsOf(model, true);
    return std::sqrt(most * fit.squares / std::max(freedom, 1.0));
}

} // namespace

int UnknownsOf(MapModel model, bool scale)
{
    switch (model) {
    case MapModel::kSimilarity:
        return scale ? 4 : 3;
    case MapModel::kAffine:
        return 6;
    case MapModel::kHomography:
        return 8;
    case MapModel::kDistortion:
        break;
    }
    return 2 * FieldMap::kTerms;
}

std::optional<MapFit> FitMap(const std::vector<StarPair>& pairs, MapModel model, const Area& area)
{
    MapFit fit;
    if (model == MapModel::kHomography) { // a tilt shows only where there are places that it moves
        const std::optional<MapFit> affine = FitMap(pairs, MapModel::kAffine, area);
        fit = affine.value_or(fit);
    }
    fit.map.x0 = 0.5 * (area.left + area.right);
    fit.map.y0 = 0.5 * (area.top + area.bottom);
    fit.map.size = 0.5 * std::max({area.right - area.left, area.bottom - area.top, 1.0});
    double moved = 2.0 * kSettledCorner;
    for (int round = 0; round < kFitRounds && moved > kSettledCorner; ++round) {
        const std::optional<std::vector<double>> step = StepFrom(fit.map, pairs, model).Solve();
        if (!step) {
            return std::nullopt;
        }
        const std::vector<double*> free = FreeOf(fit.map, model);
        moved = 0.0;
        for (std::size_t i = 0; i < free.size(); ++i) {
            *free[i] += (*step)[i];
            moved = std::max(moved, std::fabs((*step)[i]));
        }
    }
    fit.squares = SquaresOf(fit.map, pairs);
    const LeastSquares last = StepFrom(fit.map, pairs, model);
    if (!last.Solve() || !std::isfinite(fit.squares)) {
        return std::nullopt;
    }
    fit.cornerError = CornerError(last, fit, 2 * pairs.size(), model, area);
    return fit;
}

} // namespace corvane::stars
