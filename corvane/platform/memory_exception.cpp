#include "corvane/platform/memory_exception.h"

void AfxThrowMemoryException()
{
    throw CMemoryException();
}
