#pragma once

#include <string>
#include <vector>

#include "corvane/platform/export.h"
#include "stack/combine/combine.h"
#include "stack/plan.h"
#include "stack/stack.h"

namespace corvane::stack {

/// The file that each light is written to on the grid of the stack, NAME_registered.fits in the folder of the options;
/// nothing when they name none.
CORVANE_VISIBLE std::vector<std::string> RegisteredFiles(const Options& options);

/// Writes the lights that are used, calibrated and sampled as the plan places them, but neither normalised nor
/// combined, with the coordinates of the stack. On an error, or when cancelled, those that were written are taken away
/// again.
void WriteRegistered(const Options& options, const Plan& plan, const CombinePlan& combining, FrameSource& source,
                     const Result& stack, const Run& run);

} // namespace corvane::stack
