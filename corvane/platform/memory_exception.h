#pragma once

#include <new>

#include "corvane/platform/export.h"

/// There is not enough memory, or not enough disk space to stand in for it. Thrown by value.
class CORVANE_API CMemoryException : public std::bad_alloc {
public:
    const char* what() const noexcept override;
};

/// Throws CMemoryException.
[[noreturn]] CORVANE_API void AfxThrowMemoryException();
