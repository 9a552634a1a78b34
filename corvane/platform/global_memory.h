#pragma once

#include <cstddef>

#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

#ifndef _WIN32

/// Makes a block of movable memory, zeroed when `flags` holds GMEM_ZEROINIT; null when there is none.
/// The handle is never the block's address, and no later block gets the same handle.
CORVANE_API HGLOBAL GlobalAlloc(UINT flags, std::size_t bytes);

/// The block's address, counted as one more lock; null for a handle that is freed or unknown and for an empty block.
CORVANE_API void* GlobalLock(HGLOBAL block);

/// Takes one lock back; returns non-zero while locks remain.
CORVANE_API BOOL GlobalUnlock(HGLOBAL block);

/// The block's size in bytes; 0 for a handle that is freed or unknown.
CORVANE_API std::size_t GlobalSize(HGLOBAL block);

/// Frees the block, locked or not, and returns null; returns a handle that is freed or unknown as it is.
CORVANE_API HGLOBAL GlobalFree(HGLOBAL block);

#endif
