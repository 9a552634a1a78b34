#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/cell_grid.h"

namespace corvane::stars {

/// The sky of one plane, as it changes over the frame: gradients, vignetting and nebulae are part of it, stars are not.
struct SkyMesh {
    CellGrid level; ///< [raw units]
    CellGrid noise; ///< standard deviation of single samples [raw units]

    /// True when no cell has samples enough.
    bool IsEmpty() const { return level.Value(0, 0) != level.Value(0, 0); }
};

/// Measures the sky in cells of about 64 pixels, each from some 600 of its samples; blanks, NaN and infinities are
/// passed over.
///
/// Samples farther than 3 deviations from the median are left out until no more are; the level is the mean of the rest,
/// or, where stars have pulled at it, the estimate of the mode. Coarse steps between the samples, as of 8-bit pictures,
/// count as noise. Cells that have few samples or all the same (a border without data) take the values around them; one
/// that sticks out among its neighbours (a galaxy in it) takes their median. After E. Bertin & S. Arnouts (1996),
/// Astronomy and Astrophysics Supplement 117, 393. A plane of one value has noise 0; one without any sample has an
/// empty mesh. Of the run only its threads count.
CORVANE_VISIBLE SkyMesh MeasureSkyMesh(const CStlImage& image, int plane, const Run& run = {});

} // namespace corvane::stars
