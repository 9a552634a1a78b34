#pragma once

#include <string>

#include "stack/stack.h"

namespace corvane::cli {

/// What became of each light as an HTML page: how they drifted, what was measured of one after the other, and the
/// table. It loads nothing and runs no script. `stack` is a picture that stands before all that, or empty.
std::string ReportPage(const stack::Registration& lights, const std::string& stack);

} // namespace corvane::cli
