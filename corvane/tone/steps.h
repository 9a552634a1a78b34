#pragma once

#include <cmath>

#include "corvane/core/display_scale.h"

namespace corvane {

/// Whether two ways to tell on which step of the display scale a sample lies agree for every float: `exact` in the
/// order of operations that defines the steps, `quick` without its division and with samples on a step lifted above it.
/// Step i of `steps` begins at level min + i * `width`.
///
/// Both rise with the sample, and rounding moves a step by less than half the distance of neighbouring floats, so they
/// can differ only at the float nearest to a step. Close to 0, where floats are finer than that, no answer is certain.
template <class Exact, class Quick>
bool AgreeOnSteps(const DisplayScale& scale, double width, int steps, Exact exact, Quick quick)
{
    const double finest = 1e-6 * (std::fabs(scale.min) + scale.range);
    bool agree = scale.range > 0.0;
    for (int i = 1; agree && i <= steps; ++i) {
        const double nearest = static_cast<float>(scale.min + width * i);
        agree = std::fabs(nearest) >= finest && exact(nearest) == quick(nearest);
    }
    return agree;
}

/// Lifts samples that lie on a step above it, by less than any other sample lies away from one.
inline constexpr double kStepLift = 1.0 + 0x1p-50;

} // namespace corvane
