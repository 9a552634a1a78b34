#include <climits>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "corvane/resources/string_table.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;
using Messages = std::vector<std::string>;

/// An image that reports to a recording window.
struct ProgressMessages : testing::Test {
    ProgressMessages() { image.SetProgressHandle(window.Handle()); }
    void Press(int key) { PostMessageA(window.Handle(), WM_KEYDOWN, static_cast<WPARAM>(key), 0); }
    bool TakeKey()
    {
        MSG message;
        return PeekMessageA(&message, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE) != 0;
    }

    ProgressWindow window;
    CStlImage image;
};

TEST_F(ProgressMessages, ReportsAboutFiftyTimes)
{
    for (const int total : {1, 30, 99, 120, 1000}) {
        for (const int step : {1, 40}) {
            const std::vector<int> steps(static_cast<std::size_t>(total), step);
            image.ShowProgressInit(1, IDS_INVERT, total);
            for (const int n : steps) {
                EXPECT_EQ(image.ShowProgress(n), 1);
            }
            image.ShowProgressEnd(nullptr);
            EXPECT_EQ(window.Take(), Counted("Inverting...", total, steps)) << total << ' ' << step;
        }
    }
    image.ShowProgressInit(1, "none", 0); // not guarded
    image.ShowProgress(1);
    EXPECT_EQ(window.Take(), (Messages{"0:none", "1:" + std::to_string(INT_MIN)}));
}

TEST_F(ProgressMessages, DirectModeForwards)
{
    image.ShowProgressInit("direct");
    for (const int n : {7, -3, 200}) {
        image.ShowProgress(n);
    }
    image.ShowProgressInit(IDS_CALCULATION);
    image.ShowProgressMsg(IDS_INITIALIZING);
    image.ShowProgressEnd(IDS_LUCY_CANCELLED);
    image.ShowProgressEnd(nullptr);
    image.ShowProgressMsg("still");
    EXPECT_EQ(window.Take(), (Messages{"0:direct", "1:7", "1:-3", "1:200", "0:Calculating...", "4:Initializing...",
                                       "2:Cancelled", "4:still"}));
}

TEST_F(ProgressMessages, EscapeCancelsAndOtherKeysAreDropped)
{
    image.ShowProgressInit(0, "hidden", 1000);
    Press(65);
    EXPECT_EQ(image.ShowProgress(1), 1);
    EXPECT_TRUE(window.Take().empty());
    EXPECT_TRUE(TakeKey()); // the queue was left alone
    image.ShowProgressInit(1, "keys", 1000);
    for (const int key : {65, VK_ESCAPE, 67}) {
        Press(key);
    }
    PostMessageA(window.Handle(), WM_PAINT, 0, 0);
    EXPECT_EQ(image.ShowProgress(1), 0);
    EXPECT_EQ(window.Paints(), 0); // ESC returns before anything is painted
    EXPECT_TRUE(TakeKey());
    Press(68);
    EXPECT_EQ(image.ShowProgress(0), 1);
    EXPECT_EQ(window.Paints(), 1);
    EXPECT_FALSE(TakeKey());
}

TEST_F(ProgressMessages, EndOfTheProgramIsLeftToItsOwnLoop)
{
    image.ShowProgressInit(1, "ends", 1000);
    PostQuitMessage(VK_ESCAPE); // not a key
    PostMessageA(window.Handle(), WM_PAINT, 0, 0);
    EXPECT_EQ(image.ShowProgress(1), 1);
    EXPECT_EQ(window.Paints(), 1);
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, nullptr, WM_USER, WM_USER, PM_REMOVE), 0);
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_EQ(message.wParam, WPARAM{VK_ESCAPE});
    EXPECT_EQ(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
}
