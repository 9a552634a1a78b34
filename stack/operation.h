#pragma once

#include <vector>

#include "catalogue/operation.h"
#include "corvane/platform/export.h"
#include "stack/options.h"

namespace corvane::stack {

/// `stack` and `register`, described as the catalogue describes its operations. Their frames stay in files until they
/// are needed: `Stack` and `Register` do the work.
CORVANE_VISIBLE std::vector<catalogue::Operation> Operations();

/// What files and arguments of one of these operations ask for. Throws what `CheckOptions` throws.
CORVANE_VISIBLE Options OptionsOf(const catalogue::Files& files, const catalogue::Arguments& arguments);

} // namespace corvane::stack
