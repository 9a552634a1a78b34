#include "corvane/platform/application.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

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

TEST(Registry, SettingsAreKeptBySectionAndKey)
{
    CRegistry::Write("A", "Min", 0.25);
    CRegistry::Write("B", "Min", 0.75);
    CRegistry::Write("B", "Min", 0.5);
    const struct {
        const char *section, *key;
        int found;
        double value;
    } cases[] = {{"A", "Min", 1, 0.25}, {"B", "Min", 1, 0.5}, {"AM", "in", 0, 9.0}, {"A", "Max", 0, 9.0}};
    for (const auto& c : cases) {
        double value = -1.0;
        EXPECT_EQ(CRegistry::Read(c.section, c.key, 9.0, &value) != 0, c.found != 0);
        EXPECT_EQ(value, c.value) << c.section << c.key;
    }
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

} // namespace
