#include "corvane/platform/application.h"

#include <limits>
#include <string>
#include <tuple>
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
    for (int i = 0; i < 2; ++i) {
        BeginWaitCursor();
        BeginWaitCursor();
        EndWaitCursor();
        EXPECT_EQ(heard.size() % 2, 1U);
        EndWaitCursor();
        EndWaitCursor();
    }
    EXPECT_EQ(heard, (std::vector<bool>{true, false, true, false}));
    SetWaitCursorHandler(nullptr);
}

TEST(Registry, SettingsAreKeptBySectionAndKeyAndCutToIntegers)
{
    CRegistry::Write("A", "Min", 0.25);
    CRegistry::Write("B", "Min", 0.75);
    CRegistry::Write("B", "Min", -2.9);
    CRegistry::Write("B", "High", 3e9);
    const std::tuple<const char*, const char*, double, int> cases[] = {
        {"A", "Min", 0.25, 0}, {"B", "Min", -2.9, -2}, {"B", "High", 3e9, 2147483647}, {"BM", "in", 9.0, 7}};
    for (const auto& [section, key, value, integer] : cases) {
        double readValue = -1.0;
        int readInteger = -1;
        EXPECT_EQ(CRegistry::Read(section, key, 9.0, &readValue) != 0, value != 9.0) << section << key;
        EXPECT_EQ(CRegistry::Read(section, key, 7, &readInteger) != 0, integer != 7) << section << key;
        EXPECT_EQ(readValue, value) << section << key;
        EXPECT_EQ(readInteger, integer) << section << key;
    }
    int integer = -1;
    CRegistry::Write("B", "Min", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(CRegistry::Read("B", "Min", 7, &integer), 0);
    EXPECT_EQ(integer, 7);
}

} // namespace
