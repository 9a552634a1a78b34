#pragma once

namespace corvane {

/// What lines and letters are drawn with.
struct Pen {
    double thickness =
        1.0;              ///< [pixels, above 0; above 1e6 counts as 1e6] width of a line; 0, less or NaN draws nothing
    double value = 255.0; ///< what samples become: a display value, or with `raw` a raw one
    int raw = 0;          ///< non-zero: `value` is the raw sample; zero: it goes through the levels of each plane
    int plane = -1;       ///< the plane to draw on, -1 for all; one that the image lacks stays as it is
};

} // namespace corvane
