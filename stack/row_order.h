#pragma once

#include "stack/plan.h"

namespace corvane::stack {

/// Turns frames upside down, with a note for each kind, whose headers state another order of rows than the first that
/// states one: of the light that is named as the reference, of the other lights, of the calibration frames.
void BringToOneOrder(const Options& options, Plan& plan);

} // namespace corvane::stack
