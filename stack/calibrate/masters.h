#pragma once

#include <vector>

#include "corvane/core/run.h"
#include "stack/calibrate/calibrate.h"
#include "stack/calibrate/master_store.h"
#include "stack/plan.h"

namespace corvane::stack {

/// The blank value that frames of a set are given in common: the first one declared, or else the one that their bits
/// per sample stand for, which is never the 0 that real samples have.
int CommonBlank(const FrameSet& frames);

/// Makes the master frames of each set of a plan. Each flat loses the flat-darks, or else the bias, and is brought to
/// the mean of the first one. What is undefined in some of the flats is the median of the others. Those that the store
/// has are taken from there, and others kept there. Throws Error for a flat without light and for frames of which
/// nothing is defined, and `Cancelled`.
std::vector<Masters> MakeMasters(Plan& plan, const MasterStore& store, const Run& run);

} // namespace corvane::stack
