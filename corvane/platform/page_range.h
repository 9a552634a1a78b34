#pragma once

#include <cstdint>

#include "corvane/platform/memory.h"

namespace corvane::platform {

/// Whole pages: where they begin and how many bytes they are, 0 when there are none.
struct PageRange {
    std::uintptr_t first;
    std::size_t bytes;
};

/// The pages that lie inside a range of bytes.
inline PageRange PagesInside(std::uintptr_t begin, std::size_t bytes)
{
    const std::uintptr_t mask = PageSize() - 1;
    const std::uintptr_t first = (begin + mask) & ~mask;
    const std::uintptr_t end = (begin + bytes) & ~mask;
    return {first, first < end ? end - first : 0};
}

/// The pages that a range of bytes touches.
inline PageRange PagesAround(std::uintptr_t begin, std::size_t bytes)
{
    const std::uintptr_t mask = PageSize() - 1;
    const std::uintptr_t first = begin & ~mask;
    const std::uintptr_t end = (begin + bytes + mask) & ~mask;
    return {first, bytes > 0 ? end - first : 0};
}

} // namespace corvane::platform
