#include "corvane/platform/memory.h"

#include "corvane/platform/page_range.h"
#include "corvane/platform/types.h"

namespace corvane::platform {

std::uint64_t PhysicalMemory()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

std::size_t PageSize()
{
    static const std::size_t size = [] {
        SYSTEM_INFO information{};
        GetSystemInfo(&information);
        return static_cast<std::size_t>(information.dwPageSize);
    }();
    return size;
}

void* AllocatePages(std::size_t bytes)
{
    return bytes == 0 ? nullptr : VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void FreePages(void* memory, std::size_t) noexcept
{
    if (memory != nullptr) {
        VirtualFree(memory, 0, MEM_RELEASE);
    }
}

void OfferPages(void* memory, std::size_t bytes) noexcept
{
    const PageRange pages = PagesInside(reinterpret_cast<std::uintptr_t>(memory), bytes);
    if (pages.bytes > 0) {
        VirtualAlloc(reinterpret_cast<void*>(pages.first), pages.bytes, MEM_RESET, PAGE_READWRITE);
    }
}

} // namespace corvane::platform
