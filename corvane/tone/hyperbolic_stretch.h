#pragma once

#include "corvane/platform/export.h"
#include "corvane/tone/stretch.h"

namespace corvane {

/// The shape of a generalised hyperbolic stretch.
struct HyperbolicShape {
    double d;             ///< how far it goes, D [0 or above]: 0 changes nothing
    double b = 0.0;       ///< how it bends: 0 exponential, above 0 hyperbolic, -1 logarithmic, else a power
    double sp = 0.0;      ///< the place of most contrast, SP [0..1]
    double lp = 0.0;      ///< below it is a straight line, LP [0..sp]
    double hp = 1.0;      ///< above it is a straight line, HP [sp..1]
    bool inverse = false; ///< undoes the stretch of that shape
};

/// The generalised hyperbolic stretch of D. Payne and M. Cranfield (2022).
///
/// With T(u) = 1 - exp(-D u) for b = 0, 1 - (1 + b D u)^(-1/b) for b > 0, ln(1 + D u) for b = -1, and
/// (1 - (1 - b D u)^((b + 1) / b)) / (D (b + 1)) for other b < 0, f(x) is T(x - SP) from SP on and -T(SP - x) below,
/// prolonged by its tangents below LP and above HP, and shifted and scaled so that 0 and 1 stay. Value and slope are
/// continuous. The inverse is within 1e-6 where the slope is above 1e-10.
CORVANE_VISIBLE StretchFunction HyperbolicStretch(const HyperbolicShape& shape);

} // namespace corvane
