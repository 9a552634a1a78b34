#pragma once

#include <optional>
#include <vector>

#include "stack/options.h"
#include "stack/stars.h"

namespace corvane::stack {

/// Marks the stars of a frame whose peak, as it was read, lies at the sensor's ceiling: the full scale of 8 or 16 bits,
/// or the largest sample when several share it.
void MarkSaturated(const CStlImage& raw, int plane, std::vector<Star>& stars);

/// The star to look for in other frames: the brightest that is a point, not saturated, in a patch that no trail
/// crosses, without another star nearly as bright within the search, and farther from the edges than the search
/// goes. Failing that, these count in this order; of rivals the faintest. Stars of less than half the brightest one count
/// only to avoid a trail. Empty without stars.
std::optional<PixelPlace> ChooseReference(const std::vector<Star>& stars, int width, int height, int size, int search);

} // namespace corvane::stack
