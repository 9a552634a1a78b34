#include <atomic>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "corvane/platform/workers.h"

namespace corvane::platform {
namespace {

bool WorkersWork()
{
    std::atomic<int> sum{0};
    int ticks = 0;
    ForBlocks(
        100, 4, [&](int block) { sum += block; }, [&](int) { ++ticks; });
    return sum == 4950 && ticks == 100;
}

TEST(Workers, MeetNoForkBetweenCalls)
{
    ASSERT_TRUE(WorkersWork());
    const pid_t child = fork();
    if (child == 0) {
        _exit(WorkersWork() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(WorkersWork());
}

} // namespace
} // namespace corvane::platform
