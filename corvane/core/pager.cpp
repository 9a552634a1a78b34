#include "corvane/core/pager.h"

#include <algorithm>
#include <limits>

#include "corvane/core/memory_budget.h"
#include "corvane/core/sample_memory.h"
#include "corvane/platform/memory_exception.h"

namespace corvane {
namespace {

constexpr std::uint64_t kPageBytes = 1 << 20;
constexpr int kAway = 0;
constexpr int kInMemory = 1;
// A sampler reads two rows at a time, and either may lie in two pages: with fewer the store would fetch in circles.
constexpr int kLeastResident = 4;

std::uint64_t WholeRows(std::uint64_t rowBytes)
{
    return rowBytes * std::max<std::uint64_t>(kPageBytes / rowBytes, 1);
}

int PageCount(std::uint64_t bytes, std::uint64_t pageBytes)
{
    const std::uint64_t count = (bytes + pageBytes - 1) / pageBytes;
    if (count > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
        AfxThrowMemoryException();
    }
    return static_cast<int>(count);
}

} // namespace

Pager::Pager(const std::string& folder, std::uint64_t bytes, std::uint64_t rowBytes)
    : pageBytes_(WholeRows(rowBytes)), file_(folder, bytes), map_(PageCount(bytes, pageBytes_)),
      holds_(static_cast<std::size_t>(map_.GetBlockCount()))
{
    slots_.reserve(holds_.size()); // so that reading and writing samples needs no memory
}

Pager::~Pager()
{
    SubtractMemoryInUse(static_cast<std::uint64_t>(state_.resident) * pageBytes_);
}

unsigned char* Pager::Touch(std::uint64_t offset, bool hold)
{
    const std::lock_guard lock(mutex_);
    const int page = static_cast<int>(offset / pageBytes_);
    int slot = map_.GetSlotIndex(page);
    if (slot < 0) {
        slot = Bring(page);
    } else if (slot != state_.newest) {
        Unlink(slot);
        Link(slot);
    }
    if (hold) {
        state_.locked += holds_[static_cast<std::size_t>(page)]++ == 0;
    }
    return file_.Data() + offset;
}

bool Pager::Unhold(const void* address)
{
    const auto offset = static_cast<const unsigned char*>(address) - file_.Data();
    if (offset < 0 || static_cast<std::uint64_t>(offset) >= file_.Size()) {
        return false;
    }
    const std::lock_guard lock(mutex_);
    int& holds = holds_[static_cast<std::uint64_t>(offset) / pageBytes_];
    if (holds == 0) {
        return false;
    }
    state_.locked -= --holds == 0;
    return true;
}

void Pager::UnholdAll()
{
    const std::lock_guard lock(mutex_);
    if (state_.locked > 0) {
        std::fill(holds_.begin(), holds_.end(), 0);
    }
    state_.locked = 0;
}

int Pager::Bring(int page)
{
    const int slot = TakeSlot();
    slots_[slot] = Slot{page};
    map_.Set(page, kInMemory, slot);
    Link(slot);
    ++state_.resident;
    ++state_.fetched;
    AddMemoryInUse(pageBytes_);
    ReleaseOverBudget();
    return slot;
}

int Pager::TakeSlot()
{
    if (state_.free < 0) {
        slots_.emplace_back();
        return static_cast<int>(slots_.size()) - 1;
    }
    const int slot = state_.free;
    state_.free = slots_[slot].older;
    return slot;
}

void Pager::Link(int slot)
{
    slots_[slot].newer = -1;
    slots_[slot].older = state_.newest;
    (state_.newest < 0 ? state_.oldest : slots_[state_.newest].newer) = slot;
    state_.newest = slot;
}

void Pager::Unlink(int slot)
{
    const Slot& gone = slots_[slot];
    (gone.newer < 0 ? state_.newest : slots_[gone.newer].older) = gone.older;
    (gone.older < 0 ? state_.oldest : slots_[gone.older].newer) = gone.newer;
}

void Pager::ReleaseOverBudget()
{
    if (MemoryInUse() > MemoryBudget()) {
        DropSpareMemory();
    }
    while (state_.resident > kLeastResident && MemoryInUse() > MemoryBudget()) {
        Release(Victim());
    }
}

int Pager::Victim() const
{
    for (int slot = state_.oldest; slot != state_.newest; slot = slots_[slot].newer) {
        if (holds_[static_cast<std::size_t>(slots_[slot].page)] == 0) {
            return slot;
        }
    }
    // Every page but the newest is held. The bound still counts: addresses outlive their pages, so letting the oldest
    // go costs its holder a fetch and nothing else. It stays held.
    return state_.oldest;
}

void Pager::Release(int slot)
{
    const int page = slots_[slot].page;
    const std::uint64_t offset = static_cast<std::uint64_t>(page) * pageBytes_;
    file_.Release(offset, std::min(pageBytes_, file_.Size() - offset));
    Unlink(slot);
    slots_[slot] = Slot{-1, -1, state_.free};
    state_.free = slot;
    map_.Set(page, kAway, -1);
    --state_.resident;
    ++state_.released;
    SubtractMemoryInUse(pageBytes_);
}

} // namespace corvane
