#include "corvane/platform/memory_exception.h"

const char* CMemoryException::what() const noexcept
{
    return "not enough memory";
}

void AfxThrowMemoryException()
{
    throw CMemoryException();
}
