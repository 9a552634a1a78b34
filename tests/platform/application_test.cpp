#include "corvane/platform/application.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/platform/rect.h"
#include "corvane/platform/registry.h"

using namespace corvane::platform;

namespace {

TEST(MessageBox, GoesToTheHandlerOrToStandardError)
{
    std::string shown;
    SetMessageBoxHandler([&shown](const char* text, UINT type) {
        shown = text;
        return static_cast<int>(type) + 5;
    });
    EXPECT_EQ(AfxMessageBox("Cancelled", MB_ICONINFORMATION), 0x45);
    EXPECT_EQ(shown, "Cancelled");
    EXPECT_EQ(AfxMessageBox(nullptr), 5);
    EXPECT_EQ(shown, "");

    SetMessageBoxHandler(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(AfxMessageBox("Cancelled"), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Cancelled\n");
}

TEST(WaitCursor, HandlerHearsTheOutermostChangeOnly)
{
    std::vector<bool> heard;
    SetWaitCursorHandler([&heard](bool on) { heard.push_back(on); });
    EndWaitCursor();
    BeginWaitCursor();
    BeginWaitCursor();
    EndWaitCursor();
    EXPECT_EQ(heard, std::vector<bool>{true});
    EndWaitCursor();
    EndWaitCursor();
    BeginWaitCursor();
    EndWaitCursor();
    EXPECT_EQ(heard, (std::vector<bool>{true, false, true, false}));
    SetWaitCursorHandler(nullptr);
}

TEST(Registry, AbsentSettingGivesTheDefault)
{
    int plane = -1;
    double level = -1;
    EXPECT_EQ(CRegistry::Read("Absent", "Plane", 2, &plane), 0);
    EXPECT_EQ(CRegistry::Read("Absent", "Min", 0.2, &level), 0);
    EXPECT_EQ(plane, 2);
    EXPECT_EQ(level, 0.2);
}

TEST(Registry, SettingsAreKeptBySectionAndKey)
{
    CRegistry::Write("A", "Min", 0.25);
    CRegistry::Write("A", "Max", 3);
    CRegistry::Write("B", "Min", 0.75);
    CRegistry::Write("B", "Min", 0.5);
    double value = 0;
    int count = 0;
    EXPECT_NE(CRegistry::Read("A", "Min", 1.0, &value), 0);
    EXPECT_EQ(value, 0.25);
    EXPECT_NE(CRegistry::Read("B", "Min", 1.0, &value), 0);
    EXPECT_EQ(value, 0.5);
    EXPECT_NE(CRegistry::Read("A", "Max", 1.0, &value), 0);
    EXPECT_EQ(value, 3.0);
    EXPECT_NE(CRegistry::Read("A", "Max", 1, &count, 1), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(CRegistry::Read("AM", "in", 1.0, &value), 0);
}

TEST(Registry, IntegerReadOfAFractionIsCutAndHeld)
{
    constexpr int kLow = std::numeric_limits<int>::min();
    constexpr int kHigh = std::numeric_limits<int>::max();
    const struct {
        double stored;
        int read;
    } cases[] = {{2.9, 2}, {-2.9, -2}, {1e300, kHigh}, {-1e300, kLow}, {kHigh + 0.5, kHigh}, {kLow - 0.5, kLow}};
    for (const auto& c : cases) {
        int value = 99;
        CRegistry::Write("Cut", "Value", c.stored);
        EXPECT_NE(CRegistry::Read("Cut", "Value", 7, &value), 0);
        EXPECT_EQ(value, c.read);
    }
    int value = 99;
    CRegistry::Write("Cut", "Value", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(CRegistry::Read("Cut", "Value", 7, &value), 0);
    EXPECT_EQ(value, 7);
}

TEST(Rectangle, RightAndBottomAreOutside)
{
    CRect rect(-2, 3, 5, 4);
    EXPECT_EQ(rect.Width(), 7);
    EXPECT_EQ(rect.Height(), 1);
    for (const CPoint inside : {CPoint(-2, 3), CPoint(4, 3)}) {
        EXPECT_NE(rect.PtInRect(inside), 0);
    }
    for (const CPoint outside : {CPoint(-3, 3), CPoint(5, 3), CPoint(0, 2), CPoint(0, 4)}) {
        EXPECT_EQ(PtInRect(&rect, outside), 0);
    }
    rect.SetRect(5, 4, -2, 3);
    EXPECT_EQ(rect, CRect(5, 4, -2, 3));
    EXPECT_EQ(rect.Width(), -7);
    EXPECT_EQ(rect.PtInRect(CPoint(0, 3)), 0);
    EXPECT_TRUE(CRect() == CRect(0, 0, 0, 0) && CPoint() == CPoint(0, 0));
}

} // namespace
