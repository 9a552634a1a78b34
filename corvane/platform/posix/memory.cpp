#include "corvane/platform/memory.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

#include "corvane/platform/page_range.h"

namespace corvane::platform {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

std::size_t RoundUp(std::size_t bytes, std::size_t unit)
{
    return (bytes + unit - 1) & ~(unit - 1);
}

void* MapPrivate(std::size_t bytes)
{
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

// Maps one large page too much and gives back what lies before and behind the aligned part.
void* MapLargePages(std::size_t bytes)
{
    auto* const whole = static_cast<unsigned char*>(MapPrivate(bytes + kLargePage));
    if (whole == nullptr) {
        return nullptr;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(whole);
    const std::size_t before = RoundUp(address, kLargePage) - address;
    if (before > 0) {
        munmap(whole, before);
    }
    if (before < kLargePage) {
        munmap(whole + before + bytes, kLargePage - before);
    }
#ifdef MADV_HUGEPAGE
    madvise(whole + before, bytes, MADV_HUGEPAGE);
#endif
    return whole + before;
}

} // namespace

std::uint64_t PhysicalMemory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * PageSize();
}

std::size_t PageSize()
{
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

void* AllocatePages(std::size_t bytes)
{
    if (bytes == 0 || bytes > PTRDIFF_MAX - kLargePage) {
        return nullptr;
    }
    const std::size_t mapped = RoundUp(bytes, PageSize());
    return mapped < kLargePage ? MapPrivate(mapped) : MapLargePages(mapped);
}

void FreePages(void* memory, std::size_t bytes) noexcept
{
    if (memory != nullptr) {
        munmap(memory, RoundUp(bytes, PageSize()));
    }
}

void OfferPages(void* memory, std::size_t bytes) noexcept
{
    const PageRange pages = PagesInside(reinterpret_cast<std::uintptr_t>(memory), bytes);
    if (pages.bytes > 0) {
        madvise(reinterpret_cast<void*>(pages.first), pages.bytes, MADV_FREE);
    }
}

} // namespace corvane::platform
