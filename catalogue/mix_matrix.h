#pragma once

#include <string>
#include <vector>

#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// A colour image as a plain mix of frames: rows for red, green and blue with a number for each frame, what part of it
/// goes into them.
using MixMatrix = std::vector<std::vector<double>>;

/// A matrix for a person to read: "red 0 0 1, green 1 0 0, blue 0 1 0".
std::string MatrixText(const MixMatrix& matrix);

/// A palette that has a name.
struct NamedPalette {
    const char* name;
    std::vector<const char*> lines; ///< the frames that it takes, in their order
    MixMatrix matrix;
};

/// The built-in palettes of narrow-band images.
const std::vector<NamedPalette>& Palettes();

/// Their names.
std::vector<std::string> PaletteNames();

/// Their matrices for a person to read: "sho, of Ha, OIII, SII: red 0 0 1, green 1 0 0, blue 0 1 0".
std::string PalettesText();

/// The matrix of a built-in palette, or of a text file: three lines, for red, green and blue, with a number for each of
/// 1 to 16 frames. Commas count as blanks, # begins a comment. Throws Error that names the file and what is wrong with
/// it.
CORVANE_VISIBLE MixMatrix ReadMixMatrix(const std::string& nameOrFile);

} // namespace corvane::catalogue
