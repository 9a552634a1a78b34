#pragma once

#include <optional>

#include "examples/night/placement.h"
#include "examples/night/plane.h"

namespace corvane::night {

/// Adds a spiral galaxy that stands in the middle of the first light and is seen at a slant: a round red bulge, and a
/// blue disk with two arms, whose light falls off exponentially (Freeman 1970, Astrophysical Journal 160). `core` is
/// its brightness in the middle [electrons in a pixel] on a sensor without filters.
void AddGalaxy(Plane& plane, double core, std::optional<char> filter, const Placement& placement);

} // namespace corvane::night
