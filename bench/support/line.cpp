#include "bench/support/line.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>

#include "corvane/platform/memory.h"
#include "corvane/platform/workers.h"

namespace corvane::bench {
namespace {

bool tiny = false;
int comparedThreads = 1;

/// Memory outside the images' budget, all of it touched.
class Buffer {
public:
    explicit Buffer(std::uint64_t bytes)
        : data_(static_cast<unsigned char*>(platform::AllocatePages(bytes))), bytes_(bytes)
    {
        if (data_ == nullptr) {
            throw std::runtime_error("no memory to compare with memcpy");
        }
        std::memset(data_, 1, bytes);
    }
    ~Buffer() { platform::FreePages(data_, bytes_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    unsigned char* Data() const { return data_; }

private:
    unsigned char* data_;
    std::uint64_t bytes_;
};

/// The best cost so far of each line that has a limit, as a fraction of the limit.
std::map<std::string, double>& Costs()
{
    static std::map<std::string, double> costs;
    return costs;
}

void NoteCost(const std::string& name, double fraction)
{
    const auto cost = Costs().try_emplace(name, fraction).first;
    cost->second = std::min(cost->second, fraction);
}

void Report(benchmark::State& state, const std::string& name, const Limit& limit, const Run& run)
{
    const Times& alone = run.Alone();
    const double ratio = alone.processor / alone.memcpy;
    state.SetIterationTime(alone.processor);
    state.SetBytesProcessed(static_cast<std::int64_t>(run.Bytes()));
    state.counters["x memcpy"] = ratio;
    state.counters["wall (s)"] = alone.wall;
    if (comparedThreads > 1) {
        state.counters["gain"] = alone.wall / run.Together().wall;
        state.counters["gain of memcpy"] = alone.memcpy / run.Together().memcpy;
    }
    if (limit.timesMemcpy > 0.0) {
        state.counters["limit"] = limit.timesMemcpy;
        NoteCost(name, ratio / limit.timesMemcpy);
    }
    if (limit.seconds > 0.0) {
        state.counters["limit (s)"] = limit.seconds;
        NoteCost(name, alone.processor / limit.seconds);
    }
}

} // namespace

bool IsTiny()
{
    return tiny;
}

void SetTiny(bool isTiny)
{
    tiny = isTiny;
}

int ComparedThreads()
{
    return comparedThreads;
}

void SetComparedThreads(int threads)
{
    comparedThreads = threads;
}

void TimeMemcpy(std::uint64_t bytes, int threads, Times& best)
{
    constexpr std::uint64_t kMostAtOnce = 64 << 20; // beyond the caches; larger amounts are copied piece by piece
    static const std::uint64_t size = IsTiny() ? 1 << 20 : kMostAtOnce;
    static const Buffer source(size);
    static const Buffer target(size);
    const Stopwatch watch;
    for (std::uint64_t done = 0; done < bytes; done += size) {
        const std::uint64_t piece = std::min(size, bytes - done);
        const auto copy = [&](int block) {
            const std::uint64_t first = piece * static_cast<std::uint64_t>(block) / static_cast<std::uint64_t>(threads);
            const std::uint64_t end =
                piece * static_cast<std::uint64_t>(block + 1) / static_cast<std::uint64_t>(threads);
            std::memcpy(target.Data() + first, source.Data() + first, end - first);
            benchmark::ClobberMemory();
        };
        platform::ForBlocks(threads, threads, copy, [](int) {});
    }
    best.memcpy = std::min(best.memcpy, threads == 1 ? watch.Processor() : watch.Wall());
}

Line::Line(const std::string& name, Limit limit, std::function<void(Run&)> body)
{
    const auto runLine = [=, runBody = std::move(body)](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            Run run;
            try {
                runBody(run);
            } catch (const std::exception& error) {
                throw std::runtime_error(name + ": " + error.what());
            }
            Report(state, name, limit, run);
        }
    };
    // The rounds are ours, so that memcpy stands between them.
    benchmark::RegisterBenchmark(name.c_str(), runLine)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

std::vector<std::string> LinesAboveLimit()
{
    std::vector<std::string> messages;
    for (const auto& [name, fraction] : Costs()) {
        if (fraction > 1.0) {
            char text[32];
            std::snprintf(text, sizeof text, "%.2f", fraction);
            messages.push_back(name + " takes " + text + " times its limit");
        }
    }
    return messages;
}

} // namespace corvane::bench
