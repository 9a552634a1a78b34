#pragma once

#include <optional>
#include <vector>

#include "corvane/platform/export.h"
#include "stars/find_stars.h"
#include "stars/fit_map.h"

namespace corvane::stars {

/// What is asked of the map between two fields.
struct MapOptions {
    std::optional<MapModel> model{}; ///< the richest that is allowed; unset: as the residuals say
    bool scale = false;              ///< the match had a scale, so that a similarity has one unknown more
    Area area{};                     ///< of the reference, that the map has to hold for
};

/// How a frame lies on a reference.
struct ChosenMap {
    MapModel model = MapModel::kSimilarity;
    std::optional<FieldMap> map{}; ///< unless the match itself is to be used
    double residual = 0.0;         ///< root mean square distance of its stars [pixels of the frame]; 0 without a map
    int stars = 0;                 ///< in common; 0 without a map
};

/// The part of a reference that a frame shows which a mapping lays onto it.
CORVANE_VISIBLE Area CommonArea(const Area& frame, const Area& reference, const Mapping& mapping);

/// Finds a richer map than the alignment by which `MatchFields` laid a frame onto a reference, where there is one that
/// the stars bear and need.
///
/// Each model is fitted to all usable stars in common, those that a simpler one leaves behind included, and pairs
/// beyond 2.5 times its residual are left out. The stars bear it when there are twice as many of them as it has
/// unknowns, and the standard error of a place is at most a quarter of a pixel in every corner of the area: few stars,
/// or all on one side, bear none. Of what they bear that model is taken that was asked for, or else the next simpler
/// one.
///
/// Without a wish the simplest one is taken whose residual is not significantly worse: all are fitted to the same
/// stars, those that agree with the richest that they bear, and from one to a richer one it has to lower the criterion
/// of G. Schwarz 1978, Annals of Statistics 6, 461, n ln(squares) + unknowns ln(n) with two equations n of each star,
/// by more than 10 (which stands for odds of 150 to 1), and to move stars by a thirtieth of a pixel in root mean
/// square.
CORVANE_VISIBLE ChosenMap ChooseMap(const std::vector<FieldStar>& reference, const std::vector<FieldStar>& frame,
                                    const Alignment& match, const MapOptions& options);

} // namespace corvane::stars
