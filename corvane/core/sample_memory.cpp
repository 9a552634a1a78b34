#include "corvane/core/sample_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "corvane/core/memory_budget.h"
#include "corvane/platform/memory.h"

namespace corvane {
namespace {

// Below this the allocator's own memory serves: whole system pages would be mostly padding.
constexpr std::uint64_t kLeastPaged = 1 << 20;

std::atomic<std::uint64_t> inUse{0};

bool Reserve(std::uint64_t bytes)
{
    const std::uint64_t budget = MemoryBudget();
    std::uint64_t now = inUse;
    do {
        if (bytes > budget || now > budget - bytes) {
            return false;
        }
    } while (!inUse.compare_exchange_weak(now, now + bytes));
    return true;
}

struct Block {
    void* data = nullptr;
    std::uint64_t bytes = 0;
};

/// The blocks given back last. They still count as in use, so they never push the process over its budget.
class Spare {
public:
    void* Take(std::uint64_t bytes)
    {
        const std::lock_guard lock(mutex_);
        for (Block& block : blocks_) {
            if (block.data != nullptr && block.bytes == bytes) {
                return std::exchange(block.data, nullptr);
            }
        }
        return nullptr;
    }

    void Give(void* data, std::uint64_t bytes)
    {
        platform::OfferPages(data, bytes);
        const std::lock_guard lock(mutex_);
        Drop(blocks_[oldest_]);
        blocks_[oldest_] = Block{data, bytes};
        oldest_ = (oldest_ + 1) % blocks_.size();
    }

    void DropAll()
    {
        const std::lock_guard lock(mutex_);
        std::for_each(blocks_.begin(), blocks_.end(), Drop);
    }

private:
    static void Drop(Block& block)
    {
        if (block.data != nullptr) {
            platform::FreePages(block.data, block.bytes);
            SubtractMemoryInUse(block.bytes);
            block.data = nullptr;
        }
    }

    std::mutex mutex_;
    std::array<Block, 3> blocks_; // a source, a result and a work image, as operations in a row need them
    std::size_t oldest_ = 0;
};

Spare& SpareBlocks()
{
    static Spare* const spare = new Spare; // outlives every image, those with static lifetime too
    return *spare;
}

void* AllocateNew(std::uint64_t bytes)
{
    if (!Reserve(bytes)) {
        DropSpareMemory();
        if (!Reserve(bytes)) {
            return nullptr;
        }
    }
    void* const data = bytes < kLeastPaged ? std::calloc(bytes, 1) : platform::AllocatePages(bytes);
    if (data == nullptr) {
        SubtractMemoryInUse(bytes);
    }
    return data;
}

} // namespace

std::uint64_t MemoryInUse()
{
    return inUse;
}

void AddMemoryInUse(std::uint64_t bytes)
{
    inUse += bytes;
}

void SubtractMemoryInUse(std::uint64_t bytes)
{
    inUse -= bytes;
}

void DropSpareMemory()
{
    SpareBlocks().DropAll();
}

SampleMemory::SampleMemory(std::uint64_t bytes, Contents contents) : bytes_(bytes)
{
    if (bytes == 0) {
        return;
    }
    void* const spare = bytes < kLeastPaged ? nullptr : SpareBlocks().Take(bytes);
    data_ = static_cast<unsigned char*>(spare != nullptr ? spare : AllocateNew(bytes));
    if (spare != nullptr && contents == Contents::kZero) {
        std::memset(data_, 0, bytes);
    }
}

SampleMemory::~SampleMemory()
{
    if (data_ == nullptr) {
        return;
    }
    if (bytes_ >= kLeastPaged) {
        SpareBlocks().Give(data_, bytes_);
        return;
    }
    std::free(data_);
    SubtractMemoryInUse(bytes_);
}

} // namespace corvane
