#include <gtest/gtest.h>

#include "corvane/platform/global_memory.h"
#include "corvane/platform/messages.h"

// What the stand-ins for the system's own promise besides.

TEST(StandIn, FullQueueRefusesMore)
{
    int taken = 0;
    for (int i = 0; i < 20000; ++i) {
        PostMessageA(nullptr, WM_USER, 1, 9);
    }
    for (MSG message{}; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0;) {
        ++taken;
    }
    EXPECT_EQ(taken, 10000);
}

TEST(StandIn, StaleHandlesAreRecognised)
{
    const HGLOBAL stale = GlobalAlloc(GMEM_MOVEABLE, 64);
    ASSERT_EQ(GlobalFree(stale), nullptr);
    const HGLOBAL fresh = GlobalAlloc(GMEM_MOVEABLE, 64);
    EXPECT_NE(fresh, stale);
    for (const HGLOBAL wrong : {stale, HGLOBAL{nullptr}}) {
        EXPECT_EQ(GlobalLock(wrong), nullptr);
        EXPECT_EQ(GlobalUnlock(wrong), 0);
        EXPECT_EQ(GlobalSize(wrong), 0U);
        EXPECT_EQ(GlobalFree(wrong), wrong);
    }
    EXPECT_EQ(GlobalSize(fresh), 64U);
    EXPECT_EQ(GlobalFree(fresh), nullptr);
}
