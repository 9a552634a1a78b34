#include "corvane/core/page_map.h"

#include <new>

#include "corvane/platform/memory_exception.h"

CVmHandle::CVmHandle(int blockCount)
    : blockCount_(blockCount),
      blocks_(blockCount < 0 ? nullptr : new(std::nothrow) CVmBlock[static_cast<std::size_t>(blockCount)])
{
    if (!blocks_) {
        AfxThrowMemoryException();
    }
}
