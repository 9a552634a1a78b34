#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace corvane::platform {

/// Threads besides the caller's, which wait for work that they share. The first work starts them.
class Crew {
public:
    using Work = std::function<void(std::size_t)>;

    /// So many with the caller's, or as many as there are to be had.
    explicit Crew(int threads) : others_(static_cast<std::size_t>(std::max(threads, 1) - 1)) {}
    ~Crew();
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    /// Has every thread call work(worker), from 1 on, while lead() goes on here. Neither may throw. Who has not come by
    /// the end of `lead` is not waited for.
    void Share(const Work& work, const std::function<void()>& lead);

private:
    void Start();
    void Wait(std::size_t worker);

    std::size_t others_;
    std::mutex mutex_;
    std::condition_variable changed_; ///< wakes the threads
    std::condition_variable left_;    ///< wakes the caller
    const Work* work_ = nullptr;      ///< what is to be done now
    int turn_ = 0;                    ///< counts works
    int working_ = 0;                 ///< threads that are in one
    bool isOver_ = false;
    std::vector<std::thread> threads_;
};

} // namespace corvane::platform
