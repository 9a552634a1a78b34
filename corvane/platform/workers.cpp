#include "corvane/platform/workers.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <vector>

#include "corvane/platform/crew.h"

namespace corvane::platform {
namespace {

thread_local bool isWorking = false; // in the body of a call with more than one thread
thread_local Crew* kept = nullptr;   // for calls from this thread

using Body = std::function<void(int, int)>;
using Tick = std::function<void(int)>;

/// One call's blocks, and the threads that work on them.
class Workers {
public:
    Workers(int count, int threads, const Body& body)
        : body_(body), count_(count), end_(count), at_(static_cast<std::size_t>(threads), count)
    {}

    void Run(Crew& crew, const Tick& tick)
    {
        crew.Share([this](std::size_t worker) { Follow(worker); }, [&] { Lead(tick); });
        if (error_ != nullptr) {
            std::rethrow_exception(error_);
        }
    }

private:
    using Lock = std::unique_lock<std::mutex>;

    void Follow(std::size_t worker)
    {
        Lock lock(mutex_);
        while (worker < at_.size() && next_ < end_) {
            WorkOne(worker, lock);
        }
    }

    /// Works as the others do, and tells what is done in between.
    void Lead(const Tick& tick)
    {
        Lock lock(mutex_);
        for (int told = 0; told < end_;) {
            if (told < Done()) {
                Unlocked(told, lock, [&] { tick(told); });
                ++told;
            } else if (next_ < end_) {
                WorkOne(0, lock);
            } else {
                changed_.wait(lock);
            }
        }
    }

    void WorkOne(std::size_t worker, Lock& lock)
    {
        const int block = next_++;
        at_[worker] = block;
        isWorking = true;
        Unlocked(block, lock, [&] { body_(block, static_cast<int>(worker)); });
        isWorking = false;
        at_[worker] = count_;
        changed_.notify_one();
    }

    /// Calls without the lock. A failure ends the call before the block: what goes on is before it.
    template <class Call>
    void Unlocked(int block, Lock& lock, Call call)
    {
        lock.unlock();
        std::exception_ptr error;
        try {
            call();
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        if (error != nullptr && block < end_) {
            error_ = error;
            end_ = block;
        }
    }

    /// The blocks before which all are done.
    int Done() const { return std::min(next_, *std::min_element(at_.begin(), at_.end())); }

    const Body& body_;
    int count_;
    std::mutex mutex_;
    std::condition_variable changed_; ///< wakes the caller
    int next_ = 0;                    ///< the first block that nobody has begun
    int end_;                         ///< the first one that is not to be begun
    std::vector<int> at_;             ///< the block that each thread is at; `count_` for none
    std::exception_ptr error_;
};

} // namespace

KeptThreads::KeptThreads(int threads)
{
    if (threads > 1 && kept == nullptr) { // what is of a thread may take memory at its first use: not for one thread
        crew_ = std::make_unique<Crew>(threads);
        kept = crew_.get();
    }
}

KeptThreads::~KeptThreads()
{
    if (crew_ != nullptr) {
        kept = nullptr;
    }
}

void CallForBlocks(int count, int threads, const Body& body, const Tick& tick)
{
    threads = std::min(threads, count);
    if (threads > 1 && !isWorking) {
        Crew own(threads);
        Workers(count, threads, body).Run(kept != nullptr ? *kept : own, tick);
        return;
    }
    for (int block = 0; block < count; ++block) {
        body(block, 0);
        tick(block);
    }
}

} // namespace corvane::platform
