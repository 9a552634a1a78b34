#pragma once

#include <new>

#include "corvane/platform/export.h"

/// There is not enough memory, or not enough disk space to stand in for it. Thrown by value.
///
/// It is the standard library's own exception: the memory that an image takes, the text of a name and the growth of an
/// array fail alike, and a caller need not know which of them it was.
using CMemoryException = std::bad_alloc;

/// Throws CMemoryException.
[[noreturn]] CORVANE_API void AfxThrowMemoryException();

namespace corvane {

/// What to tell a user whose work ended with CMemoryException.
inline constexpr const char* kMemoryText = "not enough memory";

/// What `work` returns; 0 or null when there is not enough memory for it, as some members promise.
template <class Work>
auto OrNothing(Work work) -> decltype(work())
{
    try {
        return work();
    } catch (const CMemoryException&) {
        return {};
    }
}

} // namespace corvane
