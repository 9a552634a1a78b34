#include "tests/support/failing_memory.h"

#include <cstdlib>
#include <new>

#include "tests/support/posix/sanitizers.h"

static thread_local long long left = -1; // allocations before the one that fails; -1 for none, -2 when it did

#if !CORVANE_SANITIZES_THREADS // its own cannot be replaced: then nothing fails, and tests of that are left out

// Replaced for the whole process, the libraries included, in all forms: under the sanitizers those that are not
// replaced are the sanitizer's own, which does not take back what comes from elsewhere.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    const bool fails = left == 0;
    left -= left > 0 ? 1 : (fails ? 2 : 0);
    return fails ? nullptr : std::malloc(size + (size == 0));
}

void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif

namespace corvane::test {

FailingMemory::FailingMemory(long long allowed)
{
    left = allowed;
}

FailingMemory::~FailingMemory()
{
    left = -1;
}

bool FailingMemory::HasFailed() const
{
    return left == -2;
}

} // namespace corvane::test
