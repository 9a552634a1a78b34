#include "corvane/platform/crew.h"

#include <algorithm>
#include <exception>

namespace corvane::platform {

/// A lock may take memory, so without threads it takes none.
Crew::~Crew()
{
    if (threads_.empty()) {
        return;
    }
    {
        const std::unique_lock lock(mutex_);
        isOver_ = true;
    }
    changed_.notify_all();
    std::for_each(threads_.begin(), threads_.end(), [](std::thread& thread) { thread.join(); });
}

void Crew::Share(const Work& work, const std::function<void()>& lead)
{
    std::unique_lock lock(mutex_);
    work_ = &work;
    ++turn_;
    lock.unlock();
    changed_.notify_all();
    Start();
    lead();
    lock.lock();
    work_ = nullptr;
    left_.wait(lock, [this] { return working_ == 0; });
}

/// Those that are started first work while others are started.
void Crew::Start()
{
    try {
        while (threads_.size() < others_) {
            threads_.emplace_back([this, worker = threads_.size() + 1] { Wait(worker); });
        }
    } catch (const std::exception&) { // no more to be had, or no memory for one
    }
}

void Crew::Wait(std::size_t worker)
{
    std::unique_lock lock(mutex_);
    for (int seen = 0;;) {
        changed_.wait(lock, [&] { return isOver_ || (work_ != nullptr && turn_ != seen); });
        if (isOver_) {
            return;
        }
        seen = turn_;
        const Work& work = *work_;
        ++working_;
        lock.unlock();
        work(worker);
        lock.lock();
        if (--working_ == 0) {
            left_.notify_one();
        }
    }
}

} // namespace corvane::platform
