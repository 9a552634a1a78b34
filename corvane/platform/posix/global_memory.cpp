#include "corvane/platform/global_memory.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "corvane/platform/memory.h"
#include "corvane/platform/memory_exception.h"

namespace {

// From here on blocks are pages of their own, large ones where the system has them: bringing in small pages costs more
// than filling them.
constexpr std::size_t kLeastPages = std::size_t{1} << 20;

struct FreeMemory {
    std::size_t bytes = 0;

    void operator()(void* memory) const
    {
        bytes < kLeastPages ? std::free(memory) : corvane::platform::FreePages(memory, bytes);
    }
};

using Memory = std::unique_ptr<void, FreeMemory>;

Memory Allocate(UINT flags, std::size_t bytes)
{
    if (bytes >= kLeastPages) {
        return Memory(corvane::platform::AllocatePages(bytes), FreeMemory{bytes});
    }
    return Memory((flags & GMEM_ZEROINIT) != 0 ? std::calloc(bytes, 1) : std::malloc(bytes), FreeMemory{bytes});
}

struct Block {
    Memory memory;
    std::size_t bytes = 0;
    unsigned locks = 0;
};

// Handles count up and are never used again, so that a stale one is recognised.
struct BlockTable {
    std::mutex mutex;
    std::uintptr_t last = 0;
    std::unordered_map<HGLOBAL, Block> blocks;

    Block* Find(HGLOBAL handle)
    {
        const auto found = blocks.find(handle);
        return found == blocks.end() ? nullptr : &found->second;
    }
};

// Never destroyed: the program's statics may free their blocks at the very end.
BlockTable& TheBlocks()
{
    static auto& table = *new BlockTable;
    return table;
}

} // namespace

HGLOBAL GlobalAlloc(UINT flags, std::size_t bytes)
{
    Block block;
    if (bytes > 0) {
        if (bytes > PTRDIFF_MAX) {
            return nullptr;
        }
        block.memory = Allocate(flags, bytes);
        if (!block.memory) {
            return nullptr;
        }
        block.bytes = bytes;
    }
    return corvane::OrNothing([&] {
        BlockTable& table = TheBlocks();
        const std::lock_guard lock(table.mutex);
        const auto handle = reinterpret_cast<HGLOBAL>(table.last + 1);
        table.blocks.emplace(handle, std::move(block));
        ++table.last;
        return handle;
    });
}

void* GlobalLock(HGLOBAL handle)
{
    BlockTable& table = TheBlocks();
    const std::lock_guard lock(table.mutex);
    Block* block = table.Find(handle);
    if (block == nullptr || !block->memory) {
        return nullptr;
    }
    ++block->locks;
    return block->memory.get();
}

BOOL GlobalUnlock(HGLOBAL handle)
{
    BlockTable& table = TheBlocks();
    const std::lock_guard lock(table.mutex);
    Block* block = table.Find(handle);
    if (block == nullptr || block->locks == 0) {
        return 0;
    }
    return --block->locks > 0;
}

std::size_t GlobalSize(HGLOBAL handle)
{
    BlockTable& table = TheBlocks();
    const std::lock_guard lock(table.mutex);
    const Block* block = table.Find(handle);
    return block == nullptr ? 0 : block->bytes;
}

HGLOBAL GlobalFree(HGLOBAL handle)
{
    BlockTable& table = TheBlocks();
    std::unique_lock lock(table.mutex);
    const auto freed = table.blocks.extract(handle);
    lock.unlock();
    return freed.empty() ? handle : nullptr;
}
