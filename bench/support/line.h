#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "corvane/core/threads.h"

namespace corvane::bench {

/// True when lines run on tiny images, so that all of them are tried in a moment; their times mean nothing then.
bool IsTiny();
void SetTiny(bool tiny);

/// A size of an image or a number of rows: `full`, or in a tiny run `tiny`.
inline int Size(int full, int tiny)
{
    return IsTiny() ? tiny : full;
}

/// How many threads lines are timed with besides one; 1: none.
int ComparedThreads();
void SetComparedThreads(int threads);

/// What a line may take at most, at full size on one core.
struct Limit {
    double timesMemcpy = 0.0; ///< times a memcpy of the same bytes, 0 for no such limit
    double seconds = 0.0;     ///< 0 for no such limit
};

constexpr Limit TimesMemcpy(double times)
{
    return {.timesMemcpy = times};
}

constexpr Limit Seconds(double seconds)
{
    return {.seconds = seconds};
}

/// Times what happens from its construction on.
class Stopwatch {
public:
    /// Seconds on the processor: what other programs take from it does not count, and neither does waiting.
    double Processor() const { return static_cast<double>(std::clock() - processor_) / CLOCKS_PER_SEC; }
    /// Seconds on the wall clock.
    double Wall() const { return std::chrono::duration<double>(Clock::now() - wall_).count(); }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point wall_ = Clock::now();
    std::clock_t processor_ = std::clock();
};

/// The best times of a line, in seconds.
struct Times {
    static constexpr double kNone = std::numeric_limits<double>::infinity();

    double processor = kNone;
    double wall = kNone;
    double memcpy = kNone; ///< on the wall clock, of the same bytes with as many threads
};

/// Notes the time of a memcpy of that many bytes between buffers that are in memory, not in the caches, on large pages.
void TimeMemcpy(std::uint64_t bytes, int threads, Times& best);

/// One run of a line: times work in turn with memcpy of the same number of bytes and keeps the best of each, with one
/// thread and with as many as are compared.
class Run {
public:
    /// Times work() on `bytes` bytes of samples.
    template <class Work>
    void Time(std::uint64_t bytes, Work work)
    {
        Time(
            bytes, [] { return 0; }, [&](int) { work(); });
    }

    /// Times work(input) for work that uses its input up: each round has a new prepare(), which is not timed.
    template <class Prepare, class Work>
    void Time(std::uint64_t bytes, Prepare prepare, Work work)
    {
        bytes_ = bytes;
        const auto round = [&](int threads, Times& best) {
            SetThreads(threads);
            TimeMemcpy(bytes, threads, best);
            auto&& input = prepare();
            const Stopwatch watch;
            work(input);
            benchmark::ClobberMemory();
            best.processor = std::min(best.processor, watch.Processor());
            best.wall = std::min(best.wall, watch.Wall());
        };
        for (int i = 0; i < (IsTiny() ? 1 : kRounds); ++i) {
            round(1, alone_);
            if (ComparedThreads() > 1) {
                round(ComparedThreads(), together_);
            }
        }
        TimeMemcpy(bytes, 1, alone_);
    }

    std::uint64_t Bytes() const { return bytes_; }
    const Times& Alone() const { return alone_; }       ///< with one thread
    const Times& Together() const { return together_; } ///< with the threads that are compared

private:
    static constexpr int kRounds = 5;

    std::uint64_t bytes_ = 0;
    Times alone_;
    Times together_;
};

/// A line of the table, registered by its constructor. The body makes its images, checks the result, and calls
/// `Run::Time` once. Its time on the processor with one thread is printed with bytes per second, the ratio to memcpy,
/// its limit, and the time that passed; with threads that are compared, how many times faster they are than one, and
/// memcpy with as many.
class Line {
public:
    Line(const std::string& name, Limit limit, std::function<void(Run&)> body);
};

/// One message for each line that was above its limit, repetitions counted by their best.
std::vector<std::string> LinesAboveLimit();

} // namespace corvane::bench
