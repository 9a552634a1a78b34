#include "cli/memory_size.h"

#include <cstdlib>

#include "cli/session.h"
#include "corvane/core/memory_budget.h"

namespace corvane::cli {
namespace {

constexpr std::uint64_t kLeastMemory = 1 << 20;

} // namespace

std::uint64_t ReadMemorySize(const std::string& name, const std::string& text)
{
    std::uint64_t bytes = 0;
    if (!ParseMemorySize(text, bytes) || bytes < kLeastMemory) {
        throw UsageError(name + " = " + text + ": must be at least 1M, in bytes or with K, M or G");
    }
    return bytes;
}

void CheckMemoryVariable()
{
    const char* const size = std::getenv("CORVANE_MEMORY");
    if (size != nullptr && *size != '\0') {
        ReadMemorySize("CORVANE_MEMORY", size);
    }
}

} // namespace corvane::cli
