#include "corvane/platform/workers.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using corvane::platform::ForBlocks;
using corvane::platform::KeptThreads;

namespace {

constexpr int kBlocks = 40;

/// What the caller of one call sees.
struct Seen {
    std::vector<int> ticks;
    std::string thrown;
};

/// A call in which a block and a tick may throw. Later blocks end sooner than earlier ones; in each, another call
/// works, and so does one in each tick.
Seen Call(int threads, std::optional<int> wrongBlock, std::optional<int> wrongTick)
{
    Seen seen;
    std::vector<std::atomic<int>> done(kBlocks);
    const auto caller = std::this_thread::get_id();
    const auto body = [&](int block) {
        std::this_thread::sleep_for(std::chrono::microseconds((kBlocks - block) * 20));
        const auto own = std::this_thread::get_id();
        ForBlocks(
            3, threads, [&](int) { done[block] += std::this_thread::get_id() == own || threads == 1 ? 1 : 99; },
            [](int) {});
        if (block == wrongBlock || block == kBlocks - 1) {
            throw std::runtime_error("block " + std::to_string(block));
        }
    };
    const auto tick = [&](int block) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_EQ(done[block], 3);
        std::atomic<int> inTick = 0;
        ForBlocks(
            5, threads, [&](int) { ++inTick; }, [](int) {});
        EXPECT_EQ(inTick, 5);
        seen.ticks.push_back(block);
        if (block == wrongTick) {
            throw std::runtime_error("tick");
        }
    };
    try {
        ForBlocks(kBlocks, threads, body, tick);
    } catch (const std::runtime_error& error) {
        seen.thrown = error.what();
    }
    return seen;
}

/// Which threads work on two blocks, neither of which ends before both have begun.
std::set<std::thread::id> WorkersOfTwo()
{
    std::vector<std::thread::id> by(2);
    std::atomic<int> begun = 0;
    ForBlocks(
        2, 2,
        [&](int block) {
            by[block] = std::this_thread::get_id();
            for (++begun; begun < 2;) {
                std::this_thread::yield();
            }
        },
        [](int) {});
    return {by.begin(), by.end()};
}

} // namespace

TEST(Workers, ShowTheCallerWhatOneThreadWould)
{
    const std::optional<int> wrong[] = {std::nullopt, 0, 17, 38};
    for (const auto& block : wrong) {
        for (const auto& tick : wrong) {
            const Seen expected = Call(1, block, tick);
            for (const int threads : {2, 3, 8, 100}) {
                for (const int kept : {0, 3}) {
                    std::optional<KeptThreads> keptThreads;
                    if (kept > 0) {
                        keptThreads.emplace(kept);
                    }
                    const Seen seen = Call(threads, block, tick);
                    EXPECT_EQ(seen.ticks, expected.ticks) << threads << ", kept " << kept;
                    EXPECT_EQ(seen.thrown, expected.thrown) << threads << ", kept " << kept;
                }
            }
        }
    }
}

TEST(Workers, ShareTheBlocks)
{
    EXPECT_EQ(WorkersOfTwo().size(), 2u);
}

TEST(Workers, StayForTheNextCallWhenKept)
{
    const KeptThreads outer(2);
    const auto first = WorkersOfTwo();
    EXPECT_EQ(first.size(), 2u);
    {
        const KeptThreads inner(2);
        EXPECT_EQ(WorkersOfTwo(), first);
    }
    EXPECT_EQ(WorkersOfTwo(), first);
}
