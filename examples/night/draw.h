#pragma once

#include "examples/night/plane.h"
#include "examples/night/settings.h"
#include "examples/night/truth.h"

namespace corvane::night {

/// Adds a star's electrons, integrated over each pixel. All but 1e-5 of its flux lies in the window that is drawn, and
/// the sum over it is within 5e-5 of the flux; what falls outside the plane is lost.
void AddStar(Plane& plane, const Star& star, Profile profile);

/// Adds a star that moves evenly by (dx, dy) pixels while the shutter is open; it is at its place half way.
void AddMovingStar(Plane& plane, const Star& star, Profile profile, double dx, double dy);

/// Adds a trail along the whole line through its two points.
void AddTrail(Plane& plane, const Trail& trail);

/// Adds a particle's charge to the pixels on its track.
void AddCosmicHit(Plane& plane, const CosmicHit& hit);

} // namespace corvane::night
