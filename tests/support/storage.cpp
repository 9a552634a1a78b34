#include "tests/support/storage.h"

#include <random>
#include <string>

#include "corvane/core/memory_budget.h"

namespace corvane::test {

TightMemory::TightMemory(std::uint64_t bytes) : before_(MemoryBudget())
{
    std::random_device entropy;
    do {
        folder_ = std::filesystem::temp_directory_path() / ("corvane-test-" + std::to_string(entropy()));
    } while (!std::filesystem::create_directory(folder_));
    SetSpillFolder(folder_.string());
    SetMemoryBudget(bytes);
}

TightMemory::~TightMemory()
{
    SetSpillFolder({});
    SetMemoryBudget(before_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

} // namespace corvane::test
