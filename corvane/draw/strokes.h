#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/draw/pen.h"

namespace corvane {

/// A straight line between two points. Whole numbers are the middles of samples.
struct Segment {
    double x0;
    double y0;
    double x1;
    double y1;
};

using Segments = std::vector<Segment>;

/// Writes the samples of `source` inside the rectangle into the target and draws segments over them, with round
/// ends. Where segments meet or cross they are one shape, not two layers.
///
/// A sample is covered by as much of a line as lies within half a pixel of the sample's middle, measured across the
/// line. It becomes the mean of itself and the pen's value, weighted by that. A blank sample, NaN or infinity is
/// replaced where half of it or more is covered, and stays elsewhere. Segments with a coordinate that is not finite are
/// left out. Reports "Calculating...", one step a row of each plane. Throws CMemoryException.
void DrawStrokes(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, const Pen& pen,
                 const Segments& segments);

} // namespace corvane
