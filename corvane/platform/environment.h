#pragma once

#include <string>

namespace corvane::platform {

/// The value of an environment variable, in UTF-8 where the system has wide text; empty when it is not set.
std::string EnvironmentText(const char* name);

} // namespace corvane::platform
