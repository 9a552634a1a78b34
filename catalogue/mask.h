#pragma once

#include <optional>

#include "catalogue/operation.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// The parameters by which a part of a step's change is taken: `mask` and `strength`.
CORVANE_VISIBLE const std::vector<Parameter>& MixParameters();

/// What they do, for people.
CORVANE_VISIBLE extern const char* const kMixHelp;

/// Gives an operation those parameters, when it is a step whose result may be mixed with the image
/// (`Footprint::MayBeMixed`). One that has a parameter of the same name keeps that.
void AddMixParameters(Operation& operation);

/// True when an operation has parameters to take a part of its change by.
CORVANE_VISIBLE bool TakesMask(const Operation& operation);

/// True when not all of a step's change is taken.
bool IsMixed(const Arguments& arguments);

/// What is taken of a step's change: see `MixImages`.
struct ChangePart {
    std::optional<CStlImage> mask; ///< of samples from 0 to 1 and undefined ones; none is 1 everywhere
    double strength;
};

/// What the arguments say; nothing when all of the change is taken. Throws Error for a mask that does not fit the frame
/// or holds anything below 0 or above 1.
std::optional<ChangePart> PartFor(const io::Frame& frame, const Arguments& arguments, const Run& run);

} // namespace corvane::catalogue
