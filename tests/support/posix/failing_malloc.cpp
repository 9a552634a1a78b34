#include "tests/support/posix/failing_malloc.h"

#include <cerrno>
#include <cstddef>
#include <utility>

#include "tests/support/posix/sanitizers.h"

static thread_local long long left = -1; // requests before the one that fails; -1 for none, -2 when it did

#if !CORVANE_SANITIZES_ADDRESSES && !CORVANE_SANITIZES_THREADS // which have allocators of their own

static bool Fails()
{
    const bool fails = left == 0;
    left -= left > 0 ? 1 : (fails ? 2 : 0);
    errno = fails ? ENOMEM : errno;
    return fails;
}

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size)
{
    return Fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return Fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size)
{
    return Fails() ? nullptr : __libc_realloc(memory, size);
}
}

#endif

void corvane::test::FailMalloc(long long allowed)
{
    left = allowed;
}

bool corvane::test::EndFailing()
{
    return std::exchange(left, -1) == -2;
}
