#pragma once

#include <vector>

#include "io/sky.h"
#include "stack/combine/combine.h"
#include "stack/options.h"

namespace corvane::stack {

/// The grid of a canvas, given that of the reference and how lights of a size are placed on it.
///
/// A union begins and ends with the outermost pixels that a light has. What all have is a rectangle that keeps within
/// the four edges of each light, the largest for lights that are turned by a few degrees, or that and quarter turns.
/// Throws Error when they have no part in common.
Grid CanvasOf(Canvas canvas, const Grid& reference, const std::vector<Placement>& lights, int width, int height);

/// Where a grid has the pixels of the reference.
io::PixelMap MapOnto(const Grid& grid);

} // namespace corvane::stack
