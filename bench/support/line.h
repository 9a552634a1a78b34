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

namespace corvane::bench {

/// True when lines run on tiny images, so that all of them are tried in a moment; their times mean nothing then.
bool IsTiny();
void SetTiny(bool tiny);

/// A size of an image or a number of rows: `full`, or in a tiny run `tiny`.
inline int Size(int full, int tiny)
{
    return IsTiny() ? tiny : full;
}

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

/// Seconds for a memcpy of that many bytes between buffers that are in memory, not in the caches, on large pages.
double TimeMemcpy(std::uint64_t bytes);

/// One run of a line: times work in turn with memcpy of the same number of bytes and keeps the best of each.
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
        for (int round = 0; round < (IsTiny() ? 1 : kRounds); ++round) {
            memcpy_ = std::min(memcpy_, TimeMemcpy(bytes));
            auto&& input = prepare();
            const Stopwatch watch;
            work(input);
            benchmark::ClobberMemory();
            seconds_ = std::min(seconds_, watch.Processor());
            wall_ = std::min(wall_, watch.Wall());
        }
        memcpy_ = std::min(memcpy_, TimeMemcpy(bytes));
    }

    std::uint64_t Bytes() const { return bytes_; }
    double Seconds() const { return seconds_; }
    double Wall() const { return wall_; }
    double Memcpy() const { return memcpy_; }

private:
    static constexpr int kRounds = 5;

    std::uint64_t bytes_ = 0;
    double seconds_ = std::numeric_limits<double>::infinity();
    double wall_ = std::numeric_limits<double>::infinity();
    double memcpy_ = std::numeric_limits<double>::infinity();
};

/// A line of the table, registered by its constructor. The body makes its images, checks the result, and calls
/// `Run::Time` once. Its time on the processor is printed with bytes per second, the ratio to memcpy, its limit, and
/// the time that passed.
class Line {
public:
    Line(const std::string& name, Limit limit, std::function<void(Run&)> body);
};

/// One message for each line that was above its limit, repetitions counted by their best.
std::vector<std::string> LinesAboveLimit();

} // namespace corvane::bench
