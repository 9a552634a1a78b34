#pragma once

#include <memory>

#include "corvane/platform/export.h"

/// One entry of a page map: what a page is and where it is listed.
class CORVANE_API CVmBlock {
public:
    virtual ~CVmBlock() = default;

    int type = 0;  ///< 0 when the page is not in memory; other values belong to the owner of the map
    int slot = -1; ///< the page's place in the owner's list, -1 for none
};

/// A page map: a fixed number of blocks. No index is checked.
class CORVANE_API CVmHandle {
public:
    /// Makes `blockCount` blocks, each of type 0 and slot -1. Throws CMemoryException when there is no memory.
    explicit CVmHandle(int blockCount);
    virtual ~CVmHandle() = default;
    CVmHandle(const CVmHandle&) = delete;
    CVmHandle& operator=(const CVmHandle&) = delete;

    /// Writes block i.
    void Set(int i, int type, int slot)
    {
        blocks_[i].type = type;
        blocks_[i].slot = slot;
    }
    /// @name Reading a block
    /// @{
    int GetType(int i) const { return blocks_[i].type; }
    int GetSlotIndex(int i) const { return blocks_[i].slot; }
    int GetBlockCount() const { return blockCount_; }
    /// @}

private:
    int blockCount_;
    std::unique_ptr<CVmBlock[]> blocks_;
};

/// The state of the paging of one store.
class CORVANE_API CVmMemory {
public:
    int resident = 0; ///< pages in memory
    int newest = -1;  ///< slot of the page used last, -1 for none
    int locked = 0;   ///< pages that somebody holds, in memory or not
    int oldest = -1;  ///< slot of the page used longest ago
    int free = -1;    ///< first slot of the list of unused slots
    int fetched = 0;  ///< pages brought in so far
    int released = 0; ///< pages written back and let go so far
};
