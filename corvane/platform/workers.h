#pragma once

#include <functional>
#include <memory>
#include <type_traits>

#include "corvane/platform/export.h"

namespace corvane::platform {

class Crew;

/// For work of many short passes: while it lives, `ForBlocks` on its thread does not start threads for each call but
/// uses those that the first one has started, at most so many with the caller's. One changes nothing, nor does another
/// inside of it.
class CORVANE_VISIBLE KeptThreads {
public:
    explicit KeptThreads(int threads);
    ~KeptThreads();
    KeptThreads(const KeptThreads&) = delete;
    KeptThreads& operator=(const KeptThreads&) = delete;

private:
    std::unique_ptr<Crew> crew_;
};

/// `ForBlocks` with functions that are called through.
CORVANE_VISIBLE void CallForBlocks(int count, int threads, const std::function<void(int, int)>& body,
                                   const std::function<void(int)>& tick);

/// Calls body(block) once for each block from 0 to count - 1, on at most `threads` threads, and tick(block) for one
/// after the other, on the caller's thread, when it and all before it are done. A body of two parameters is told the
/// number of its thread, too, from 0 to threads - 1: each thread may so have buffers of its own.
///
/// The caller works too and calls tick between its blocks. The other threads live as long as the call, so there are
/// none between calls, unless some are kept. Blocks are begun in order, each by whoever is free: `body` must do the
/// same to whatever thread it falls. What is thrown is what one thread would throw: the exception of the lowest block
/// that fails, after the ticks of those before it, or that of a tick, after which no block is begun; all threads have
/// ended by then. In the body of one call that has more than one thread, another works on its own thread alone.
///
/// It takes memory for the threads alone; where the system has no more of them, it goes on with those that there are.
template <class Body, class Tick>
void ForBlocks(int count, int threads, Body body, Tick tick)
{
    const auto call = [&body](int block, int thread) {
        if constexpr (std::is_invocable_v<Body&, int, int>) {
            body(block, thread);
        } else {
            body(block);
        }
    };
    CallForBlocks(count, threads, std::ref(call), std::ref(tick)); // references take no memory
}

} // namespace corvane::platform
