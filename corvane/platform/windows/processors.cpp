#include "corvane/platform/processors.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "corvane/platform/types.h"

namespace corvane::platform {

int AvailableProcessors()
{
    DWORD_PTR ours = 0;
    DWORD_PTR machine = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &ours, &machine);
    return std::max(std::popcount(static_cast<std::uint64_t>(ours)), 1); // none in more than one processor group
}

} // namespace corvane::platform
