#include "corvane/resources/string_table.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(StringTable, TextsAreExact)
{
    const struct {
        unsigned id;
        const char* text;
    } cases[] = {
        {3048, "Insufficient memory.  Close applications and re-execute command."},
        {3049, "Cancelled"},
        {3050, "Insufficient memory.  Close applications and re-execute command"},
        {3053, "Applying minimum/maximum filtering..."},
        {3057, "Applying Lucy-Richardson for Plane %d:  %d (press ESC to cancel)"},
        {3070, "Changing image planes..."},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(corvane::FindString(c.id), c.text) << c.id;
    }
}

TEST(StringTable, HoldsExactlyItsNumbers)
{
    for (const unsigned id : {0U, 2999U, 3045U, 3047U, 3071U, 66551U, UINT32_MAX}) {
        EXPECT_EQ(corvane::FindString(id), nullptr) << id;
    }
}

// The texts are handed to printf with as many integers as their names promise.
TEST(StringTable, TakesTheNumbersThatTheCallersGive)
{
    for (unsigned id = 3000; id <= 3070; ++id) {
        const char* found = corvane::FindString(id);
        const std::string text = found == nullptr ? "" : found;
        EXPECT_EQ(text.empty(), id == 3045 || id == 3047) << id;
        int expected = id == IDS_LUCY || id == IDS_MEM_START_PLANE || id == IDS_MEM || id == IDS_MEM_INIT_PLANE ? 1 : 0;
        expected = id == IDS_LUCY_PLANE || id == IDS_MEM_PLANE ? 2 : expected;
        int integers = 0;
        for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
            EXPECT_EQ(text.substr(at, 2), "%d") << text;
            ++integers;
        }
        EXPECT_EQ(integers, expected) << text;
    }
}

} // namespace
