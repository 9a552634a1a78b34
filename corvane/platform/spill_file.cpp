#include <algorithm>

#include "corvane/platform/memory.h"
#include "corvane/platform/page_range.h"

namespace corvane::platform {

void SpillFile::Release(std::uint64_t offset, std::uint64_t bytes) noexcept
{
    const std::uint64_t begin = std::min(offset, size_);
    const std::uint64_t count = std::min(bytes, size_ - begin);
    const PageRange pages = PagesAround(static_cast<std::uintptr_t>(begin), static_cast<std::size_t>(count));
    if (pages.bytes > 0) {
        ReleasePages(pages.first, pages.bytes);
    }
}

} // namespace corvane::platform
