#pragma once

#include "cli/session.h"
#include "cli/stack_words.h"
#include "stack/options.h"

namespace corvane::cli {

/// @name A stack that several processes make
/// @{
/// Does what comes before combining, and writes a plan.
void SavePlan(const StackWords& words, const stack::Options& options, const Session& session);
/// Combines one band of a plan.
void CombineBand(const StackWords& words, const Session& session);
/// Makes the stack of the bands of a plan.
void JoinBands(const StackWords& words, const Session& session);
/// @}

} // namespace corvane::cli
