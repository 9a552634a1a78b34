#pragma once

#include "cli/session.h"
#include "cli/stack_words.h"
#include "stack/stack.h"

namespace corvane::cli {

/// Writes a stack and what was wanted besides, all or nothing, and says what was done.
void Save(const StackWords& words, const stack::Options& options, stack::Result result, const Session& session);

} // namespace corvane::cli
