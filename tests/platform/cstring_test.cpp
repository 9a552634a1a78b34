#include "corvane/platform/cstring.h"

#include <string>

#include <gtest/gtest.h>

#include "corvane/resources/string_table.h"

namespace {

TEST(CString, NullCountsAsEmpty)
{
    const char* none = nullptr;
    CString text(none);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_STREQ(text, "");
    text = "dark";
    text += none;
    EXPECT_TRUE(text == "dark");
    text = none;
    EXPECT_TRUE(text == none);
}

TEST(CString, FormatsAnyLengthAndItsOwnText)
{
    CString text("old");
    text.Format("%d of %d: %5.2f", 3, 20, 1.005 + 1);
    EXPECT_STREQ(text, "3 of 20:  2.00");
    const std::string longText(5000, 'q');
    text.Format("[%s]", longText.c_str());
    EXPECT_EQ(text.GetString(), "[" + longText + "]");
    text = "own";
    text.Format("%s %s", text.GetString(), text.GetString());
    EXPECT_STREQ(text, "own own");
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, LoadsFromTheStringTable)
{
    CString text("old");
    EXPECT_NE(text.LoadString(IDS_INVERT), 0);
    EXPECT_STREQ(text, "Inverting...");
    EXPECT_EQ(text.LoadString(3045), 0);
    EXPECT_TRUE(text.IsEmpty());
}

} // namespace
