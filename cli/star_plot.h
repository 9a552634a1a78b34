#pragma once

#include <string>

#include "stars/measure_stars.h"

namespace corvane::cli {

/// The field that a plot shows.
struct PlottedField {
    std::string name;
    int width;     ///< [pixels]
    int height;    ///< [pixels]
    bool bottomUp; ///< the first row is the lowest one in a picture
};

/// Draws the widths of the stars that count over the field, as SVG: a disc for each, larger and redder with its width,
/// a scale from the 5th to the 95th percentile, and the mean of each of 3 x 3 parts.
std::string PlotWidths(const PlottedField& field, const stars::FieldWidths& widths);

} // namespace corvane::cli
