#pragma once

#include "examples/night/placement.h"
#include "examples/night/settings.h"
#include "io/header.h"

namespace corvane::night {

/// The cards that every frame has, as capture programs write them. The time is the start of the exposure in seconds
/// after the first light's.
io::Header FrameHeader(const NightSettings& settings, const char* type, double exposure, double time);

/// Adds the filter that lights and flats are taken through, unless the sensor has filters of its own.
void AddFilterCard(const NightSettings& settings, io::Header& header);

/// Adds what only a light has: object, and its placement as TRUEDX, TRUEDY, TRUEROT.
void AddLightCards(io::Header& header, const Placement& placement);

} // namespace corvane::night
