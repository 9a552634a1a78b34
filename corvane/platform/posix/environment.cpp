#include "corvane/platform/environment.h"

#include <cstdlib>

namespace corvane::platform {

std::string EnvironmentText(const char* name)
{
    const char* const text = std::getenv(name);
    return text == nullptr ? "" : text;
}

} // namespace corvane::platform
