#pragma once

#include <string>
#include <vector>

#include "stack/frame_report.h"
#include "stack/options.h"
#include "stack/plan.h"

namespace corvane::stack {

/// Reads a place as X,Y@FILE. Throws Error.
CORVANE_VISIBLE FollowedPlace ReadFollowedPlace(const std::string& text);
/// The place in those words.
std::string ToText(const FollowedPlace& place);

/// How something moves on the reference.
struct Motion {
    Position perSecond{0.0, 0.0};  ///< [pixels]
    std::vector<Position> since{}; ///< for each light, how far it has moved since the reference light [pixels]
};

/// Tells from two places the motion on the reference of what the options follow, which is straight and even, and counts
/// by the middles of the exposures. Lights are placed already, about a centre. Leaves out those that do not say when
/// they were taken. Throws Error for a place in a light that is left out or outside of it, and for two of one time.
Motion FollowMotion(const Options& options, const Plan& plan, int referenceLight, const CfPoint& centre,
                    std::vector<FrameReport>& reports);

} // namespace corvane::stack
