#include "corvane/platform/cstring.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(CString, NothingCountsAsEmpty)
{
    const char* none = nullptr;
    CString text("dark");
    text += none;
    EXPECT_STREQ(text, "dark");
    text = none;
    EXPECT_TRUE(text.IsEmpty() && text == CString(none));
    text = "old";
    EXPECT_EQ(text.LoadString(3045), 0); // no such text
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, FormatsAnyLengthAndItsOwnText)
{
    const std::string longText(5000, 'q');
    CString text(longText.c_str());
    text.Format("%s %s", text.GetString(), text.GetString());
    EXPECT_EQ(text.GetString(), longText + " " + longText);
}

} // namespace
