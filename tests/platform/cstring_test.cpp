#include "corvane/platform/cstring.h"

#include <string>
#include <utility>

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

TEST(CString, CopiesAreIndependent)
{
    CString a("flat");
    CString b = a;
    b += " field";
    EXPECT_STREQ(a, "flat");
    EXPECT_EQ(b.GetLength(), 10);
    const CString moved = std::move(b);
    EXPECT_STREQ(moved, "flat field");
    a = a.GetString() + 1;
    EXPECT_STREQ(a, "lat");
    a += a;
    EXPECT_STREQ(a, "latlat");
    a.Empty();
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_STREQ(moved.GetString(), "flat field");
}

TEST(CString, JoinsAndComparesTextsNotAddresses)
{
    const CString a("a");
    const std::string other("ab");
    EXPECT_TRUE(a + "b" == other.c_str());
    EXPECT_TRUE(other.c_str() == a + CString("b"));
    EXPECT_TRUE("x" + a == "xa");
    EXPECT_TRUE(a + 'b' == other.c_str());
    EXPECT_TRUE(a != "A");
    EXPECT_FALSE(a != CString("a"));
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
