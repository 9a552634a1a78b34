#pragma once

#include <cstdint>

#include "corvane/platform/export.h"

namespace corvane {

/// Plain memory for the samples of one store, counted against the process's budget.
///
/// Memory that a store gives back is kept for the next one and offered to the system meanwhile: bringing in fresh
/// pages costs more than most operations do on their contents.
class SampleMemory {
public:
    enum class Contents { kZero, kUndefined };

    SampleMemory() = default;
    /// Takes `bytes` bytes; the result is empty when they do not fit into the budget or the system has none.
    SampleMemory(std::uint64_t bytes, Contents contents);
    ~SampleMemory();
    SampleMemory(const SampleMemory&) = delete;
    SampleMemory& operator=(const SampleMemory&) = delete;

    unsigned char* Data() const { return data_; }

private:
    unsigned char* data_ = nullptr;
    std::uint64_t bytes_ = 0;
};

/// Counts memory in use that is not a `SampleMemory`.
void AddMemoryInUse(std::uint64_t bytes);
void SubtractMemoryInUse(std::uint64_t bytes);

/// Gives the memory kept for the next store back to the system.
CORVANE_VISIBLE void DropSpareMemory();

} // namespace corvane
