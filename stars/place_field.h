#pragma once

#include <vector>

#include "corvane/core/mapping.h"
#include "corvane/core/point.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "stars/find_stars.h"
#include "stars/match_fields.h"

namespace corvane::stars {

/// What is known of a frame that is placed by its stars.
struct PlacedField {
    const std::vector<FieldStar>& stars; ///< the brightest first
    int width;                           ///< of the frame [pixels]
    int height;
};

/// How a frame lies on a reference.
struct FieldPlace {
    FieldMatch match{};    ///< its shift, turn and scale; a match that is mirrored is none
    Mapping mapping{};     ///< from places in the reference to those in the frame
    bool isBent = false;   ///< the mapping is more than the match
    int stars = 0;         ///< that it is known by
    double residual = 0.0; ///< root mean square distance of these [pixels of the frame]
};

/// Places a frame that may be shifted, turned and of another scale: looks for a match of one scale, and where there is
/// none, of any (`MatchFields`); then the simplest map is taken that the stars need and bear (`ChooseMap`). One that
/// moves no corner of the reference by a thirtieth of a pixel is taken for none, so that frames of one grid keep their
/// samples. `centre` is what the match turns the frame about. Throws Cancelled.
CORVANE_VISIBLE FieldPlace PlaceField(const PlacedField& reference, const PlacedField& frame, const CfPoint& centre,
                                      const Run& run = {});

} // namespace corvane::stars
