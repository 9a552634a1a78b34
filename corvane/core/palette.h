#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "corvane/platform/types.h"

namespace corvane {

/// Cells of a colour histogram with five bits a channel.
inline constexpr int kColourCells = 32 * 32 * 32;

/// The cell of a colour: the top five bits of each byte, red highest.
constexpr int ColourCell(int red, int green, int blue)
{
    return (red >> 3) << 10 | (green >> 3) << 5 | (blue >> 3);
}

/// Chooses 256 colours for a histogram of `kColourCells` counts, and turns each cell into the index of its colour.
///
/// Median cut: the box of cells that holds the most pixels for its size is halved along its longest side, until there
/// are 256 boxes; a box's colour is the mean of its pixels. P. Heckbert, Color image quantization for frame buffer
/// display, SIGGRAPH 1982.
std::array<RGBQUAD, 256> ChoosePalette(std::vector<std::uint32_t>& cells);

} // namespace corvane
