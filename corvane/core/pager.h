#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "corvane/core/page_map.h"
#include "corvane/platform/memory.h"

namespace corvane {

/// The pages of a store that is kept in a file: which are in memory, in what order they were used, which are held.
///
/// The file is mapped whole, so an address stays good for the life of the store even when its page has been let go:
/// touching it brings the page back. What the pager adds is the bound: while the process is over its budget, the page
/// used longest ago is written back and released, pages that somebody holds last of all. Several threads may use it:
/// each call is alone, and reading or writing samples takes no turn.
class Pager {
public:
    /// Makes the file and maps it; pages are whole rows. Throws CMemoryException when there is no room for it.
    Pager(const std::string& folder, std::uint64_t bytes, std::uint64_t rowBytes);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// Makes the page at `offset` the one used last, holds it if asked, and returns the address of that byte.
    unsigned char* Touch(std::uint64_t offset, bool hold);
    /// Takes one hold off the page of the address; false when nobody held it.
    bool Unhold(const void* address);
    void UnholdAll();

    std::uint64_t PageBytes() const { return pageBytes_; }
    CVmMemory State() const
    {
        const std::lock_guard lock(mutex_);
        return state_;
    }

private:
    struct Slot {
        int page = -1;
        int newer = -1;
        int older = -1;
    };

    int Bring(int page);
    int TakeSlot();
    void Link(int slot);
    void Unlink(int slot);
    void ReleaseOverBudget();
    int Victim() const;
    void Release(int slot);

    std::uint64_t pageBytes_;
    platform::SpillFile file_;
    mutable std::mutex mutex_; ///< of all that follows
    CVmHandle map_;
    CVmMemory state_;
    std::vector<int> holds_; ///< how often each page is held, in memory or not
    std::vector<Slot> slots_;
};

} // namespace corvane
