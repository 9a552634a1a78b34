#include "corvane/core/memory_budget.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <limits>
#include <mutex>

#include "corvane/core/sample_memory.h"
#include "corvane/platform/environment.h"
#include "corvane/platform/memory.h"

namespace corvane {
namespace {

constexpr std::uint64_t kLeastBudget = 1 << 20;

std::uint64_t InitialBudget()
{
    std::uint64_t bytes = 0;
    if (!ParseMemorySize(platform::EnvironmentText("CORVANE_MEMORY"), bytes)) {
        bytes = platform::PhysicalMemory() / 2;
    }
    return std::max(bytes, kLeastBudget);
}

std::atomic<std::uint64_t>& Budget()
{
    static std::atomic<std::uint64_t> budget{InitialBudget()};
    return budget;
}

struct Folder {
    std::mutex mutex;
    std::string name;
};

Folder& ChosenFolder()
{
    static Folder folder;
    return folder;
}

} // namespace

std::uint64_t MemoryBudget()
{
    return Budget();
}

void SetMemoryBudget(std::uint64_t bytes)
{
    Budget() = std::max(bytes, kLeastBudget);
}

bool ParseMemorySize(const std::string& text, std::uint64_t& bytes)
{
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || end - rest > 1) {
        return false;
    }
    unsigned shift = 0;
    if (rest != end) {
        const std::size_t unit = std::string("KkMmGg").find(*rest);
        if (unit == std::string::npos) {
            return false;
        }
        shift = 10 * (static_cast<unsigned>(unit) / 2 + 1);
    }
    if (number > std::numeric_limits<std::uint64_t>::max() >> shift) {
        return false;
    }
    bytes = number << shift;
    return true;
}

std::string SpillFolder()
{
    {
        const std::lock_guard lock(ChosenFolder().mutex);
        if (!ChosenFolder().name.empty()) {
            return ChosenFolder().name;
        }
    }
    const std::string folder = platform::EnvironmentText("CORVANE_SPILL_DIR");
    return folder.empty() ? platform::TemporaryFolder() : folder;
}

void SetSpillFolder(const std::string& folder)
{
    const std::lock_guard lock(ChosenFolder().mutex);
    ChosenFolder().name = folder;
}

Reservation::Reservation(std::uint64_t bytes) : bytes_(bytes)
{
    AddMemoryInUse(bytes_);
    if (MemoryInUse() > MemoryBudget()) {
        DropSpareMemory();
    }
}

Reservation::~Reservation()
{
    SubtractMemoryInUse(bytes_);
}

} // namespace corvane
