#include "corvane/resources/string_table.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace {

// The texts are handed to printf with as many integers as their names promise.
TEST(StringTable, HasEveryNumberAndTakesTheIntegersThatItsCallersGive)
{
    for (unsigned id = 2999; id <= 3071; ++id) {
        const char* found = corvane::FindString(id);
        const std::string text = found == nullptr ? "" : found;
        EXPECT_EQ(text.empty(), id == 2999 || id == 3045 || id == 3047 || id == 3071) << id;
        int expected = id == IDS_LUCY || id == IDS_MEM_START_PLANE || id == IDS_MEM || id == IDS_MEM_INIT_PLANE ? 1 : 0;
        expected = id == IDS_LUCY_PLANE || id == IDS_MEM_PLANE ? 2 : expected;
        int integers = 0;
        for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
            EXPECT_EQ(text.substr(at, 2), "%d") << text;
            ++integers;
        }
        EXPECT_EQ(integers, expected) << text;
    }
    EXPECT_EQ(corvane::FindString(UINT32_MAX), nullptr);
}

} // namespace
