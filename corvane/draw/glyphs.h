#pragma once

#include <string_view>

namespace corvane {

/// One character of the built-in font, as the strokes of a pen on a grid.
///
/// Strokes are separated by blanks. A point is two hexadecimal digits, x from the left edge of the character and y
/// upwards: 0 is the lowest descender, 3 the line that letters stand on, B the top of small letters, F that of
/// capitals. Points are joined by straight lines; one with a dot before it is instead the control point of a quadratic
/// curve between its neighbours, and half-way between two such points the stroke passes through. A single point is a
/// dot.
///
///     "0F07.03.83878F"        U: down from (0, F) to (0, 7), round the corners (0, 3) and (8, 3) by way of (4, 3),
///                             on to (8, 7) and up to (8, F)
struct Glyph {
    int width; ///< of the middle lines, in units of the grid
    std::string_view strokes;
};

/// The grid's height of capitals above the line that they stand on, and its y of that line.
inline constexpr int kCapitals = 12;
inline constexpr int kBaseline = 3;
/// From the right edge of one character to the left edge of the next, in units of the grid.
inline constexpr int kBetween = 4;

/// The glyph of a printable ASCII character; for any other a box.
const Glyph& GlyphOf(char character);

} // namespace corvane
