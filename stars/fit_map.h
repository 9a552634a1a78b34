#pragma once

#include <optional>
#include <vector>

#include "corvane/core/mapping.h"
#include "corvane/platform/export.h"
#include "stars/similarity.h"

namespace corvane::stars {

/// How a frame may lie on a reference, from the fewest unknowns to the most.
enum class MapModel {
    kSimilarity, ///< shift and turn, and scale where it was asked for
    kAffine,     ///< straight lines stay straight and parallel: 6 unknowns
    kHomography, ///< straight lines stay straight: 8 unknowns
    kDistortion, ///< terms up to the third order: 20 unknowns
};

/// A part of a frame, from the middle of its first pixel to that of its last.
struct Area {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
};

/// A map of one of the richer models with the least sum of squared distances in the frame.
struct MapFit {
    FieldMap map{};
    double squares = 0.0;     ///< sum of the squared distances [square pixels]
    double cornerError = 0.0; ///< standard error of a place in that corner of the area where it is greatest [pixels]
};

/// Unknowns of a model.
int UnknownsOf(MapModel model, bool scale);

/// Fits a model to pairs, in coordinates from -1 to 1 over the area; the steps are those of Gauss and Newton. Nothing
/// when the pairs do not tell all its unknowns. Not for similarities (`FitSimilarity`).
CORVANE_VISIBLE std::optional<MapFit> FitMap(const std::vector<StarPair>& pairs, MapModel model, const Area& area);

} // namespace corvane::stars
