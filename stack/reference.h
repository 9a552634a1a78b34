#pragma once

#include <optional>
#include <vector>

#include "stack/options.h"
#include "stack/stars.h"

namespace corvane::stack {

/// Marks the stars of a frame whose peak, as it was read, lies at the sensor's ceiling: the full scale of 8 or 16 bits,
/// or the largest sample when several share it.
void MarkSaturated(const CStlImage& raw, int plane, std::vector<Star>& stars);

/// The star to look for in other frames: the brightest that is spread, not saturated, farther from the edges than the
/// search goes, and without another star nearly as bright within the search. Failing that, isolation counts more than
/// the edge; failing that, the one that stands out most among its neighbours, as a group of stars. Empty without stars.
std::optional<PixelPlace> ChooseReference(const std::vector<Star>& stars, int width, int height, int size, int search);

} // namespace corvane::stack
