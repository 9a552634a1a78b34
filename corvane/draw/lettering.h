#pragma once

#include "corvane/draw/strokes.h"

namespace corvane {

/// Where and how large a line of text stands.
struct TextPlace {
    double x; ///< a point of the line that letters stand on [pixels]
    double y;
    double height; ///< of capitals [pixels]; below 0 everything is mirrored from top to bottom
    double angle;  ///< by which the line is turned about (x, y), from x towards y before it is mirrored [degrees]
    double before; ///< the part of the text's width that lies before (x, y) [0..1]
};

/// The width of a line of text between its outermost middle lines, in heights of capitals.
double TextWidth(const char* text);

/// The middle lines of the strokes of a line of text, curves divided so that they are off by at most 1/16 pixel.
Segments TextSegments(const char* text, const TextPlace& place);

} // namespace corvane
