#include "corvane/platform/global_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

namespace {

TEST(GlobalMemory, BlockKeepsItsBytesBetweenCountedLocks)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 1000);
    EXPECT_EQ(GlobalSize(block), 1000U);
    std::memset(GlobalLock(block), 0x5A, 1000);
    const auto* bytes = static_cast<const unsigned char*>(GlobalLock(block));
    EXPECT_NE(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalLock(block), bytes);
    EXPECT_EQ(std::count(bytes, bytes + 1000, 0x5A), 1000);
    EXPECT_EQ(GlobalFree(block), nullptr);
    const HGLOBAL zeroed = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 1000); // the allocator may give the same bytes
    bytes = static_cast<const unsigned char*>(GlobalLock(zeroed));
    EXPECT_EQ(std::count(bytes, bytes + 1000, 0), 1000);
    GlobalFree(zeroed);
}

TEST(GlobalMemory, EmptyBlockHasAHandleAndAbsurdOnesAreRefused)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFree(block), nullptr);
    EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE, SIZE_MAX), nullptr);
    EXPECT_EQ(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, SIZE_MAX / 2 + 1), nullptr);
}

} // namespace
