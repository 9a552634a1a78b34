#include "corvane/platform/messages.h"

#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace corvane::platform;

namespace {

constexpr UINT kProgress = WM_USER + 0x70;

class Messages : public testing::Test {
protected:
    ~Messages() override
    {
        DestroyMessageWindow(first_);
        DestroyMessageWindow(second_);
        MSG left{};
        while (PeekMessageA(&left, nullptr, 0, 0, PM_REMOVE) != 0) {
        }
    }

    static std::vector<WPARAM> Drain(HWND window, UINT from, UINT to)
    {
        std::vector<WPARAM> words;
        for (MSG message{}; PeekMessageA(&message, window, from, to, PM_REMOVE) != 0;) {
            words.push_back(message.wParam);
        }
        return words;
    }

    std::vector<UINT> seen_;
    HWND first_ = CreateMessageWindow([this](UINT message, WPARAM wParam, LPARAM lParam) {
        seen_.push_back(message);
        return static_cast<LRESULT>(wParam) * 10 + lParam;
    });
    HWND second_ = CreateMessageWindow([](UINT, WPARAM, LPARAM) { return LRESULT{7}; });
};

using Words = std::vector<WPARAM>;

TEST_F(Messages, SendingCallsTheProcedureAtOnceAndPassesItsResult)
{
    EXPECT_EQ(SendMessageA(first_, kProgress, 4, -3), 37);
    EXPECT_EQ(SendMessageA(second_, kProgress, 4, -3), 7);
    EXPECT_EQ(seen_, std::vector<UINT>{kProgress});
}

TEST_F(Messages, PeekingFiltersByNumberAndWindowAndKeepsOrder)
{
    const auto post = [this] {
        ASSERT_NE(PostMessageA(first_, WM_KEYDOWN, 1, 0), 0);
        ASSERT_NE(PostMessageA(second_, WM_PAINT, 2, 0), 0);
        ASSERT_NE(PostMessageA(first_, WM_KEYDOWN, 3, 0), 0);
        ASSERT_NE(PostMessageA(nullptr, WM_USER, 4, 0), 0);
        ASSERT_NE(PostMessageA(second_, WM_KEYDOWN, 5, 0), 0);
    };
    struct Case {
        HWND window;
        UINT from, to;
        Words taken, left;
    };
    const Case cases[] = {
        {nullptr, 0, 0, {1, 2, 3, 4, 5}, {}},
        {nullptr, WM_KEYDOWN, WM_KEYDOWN, {1, 3, 5}, {2, 4}},
        {nullptr, WM_PAINT, WM_PAINT, {2}, {1, 3, 4, 5}},
        {nullptr, WM_PAINT + 1, WM_USER, {1, 3, 4, 5}, {2}},
        {nullptr, WM_KEYDOWN + 1, WM_USER - 1, {}, {1, 2, 3, 4, 5}},
        {first_, 0, 0, {1, 3}, {2, 4, 5}},
        {second_, WM_KEYDOWN, WM_KEYDOWN, {5}, {1, 2, 3, 4}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "range " << c.from << ".." << c.to);
        post();
        EXPECT_EQ(Drain(c.window, c.from, c.to), c.taken);
        EXPECT_EQ(Drain(nullptr, 0, 0), c.left);
    }
}

TEST_F(Messages, PeekingWithoutRemovalLeavesTheMessage)
{
    PostMessageA(first_, kProgress, 1, 9);
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE), 0);
    ASSERT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_EQ(message.hwnd, first_);
    EXPECT_EQ(message.message, kProgress);
    EXPECT_EQ(message.lParam, 9);
    EXPECT_EQ(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_TRUE(seen_.empty());
    TranslateMessage(&message);
    EXPECT_EQ(DispatchMessageA(&message), 19);
    EXPECT_EQ(seen_, std::vector<UINT>{kProgress});
}

TEST_F(Messages, DestroyedWindowTakesItsMessagesAlongAndIsIgnored)
{
    PostMessageA(first_, kProgress, 1, 0);
    PostMessageA(second_, kProgress, 2, 0);
    DestroyMessageWindow(first_);
    DestroyMessageWindow(first_);
    EXPECT_EQ(Drain(nullptr, 0, 0), Words{2});
    for (HWND gone : {first_, HWND{nullptr}, reinterpret_cast<HWND>(this)}) {
        MSG message{};
        message.hwnd = gone;
        message.message = kProgress;
        EXPECT_EQ(SendMessageA(gone, kProgress, 1, 0), 0);
        EXPECT_EQ(DispatchMessageA(&message), 0);
        EXPECT_EQ(PostMessageA(gone, kProgress, 1, 0) != 0, gone == nullptr);
    }
    EXPECT_TRUE(seen_.empty());
}

TEST_F(Messages, ProcedureMayDestroyItsOwnWindow)
{
    HWND window = nullptr;
    window = CreateMessageWindow([&window, kept = std::make_shared<int>(5)](UINT, WPARAM, LPARAM) {
        DestroyMessageWindow(window);
        return LRESULT{*kept};
    });
    EXPECT_EQ(SendMessageA(window, kProgress, 0, 0), 5);
    EXPECT_EQ(SendMessageA(window, kProgress, 0, 0), 0);
}

TEST_F(Messages, WindowWithoutProcedureIsRefused)
{
    EXPECT_EQ(CreateMessageWindow(nullptr), nullptr);
}

TEST_F(Messages, PostingFromAnotherThreadReachesTheOwnersQueueOnly)
{
    std::optional<BOOL> foundThere;
    std::vector<std::thread> posters;
    for (WPARAM poster = 0; poster < 3; ++poster) {
        posters.emplace_back([this, poster] {
            for (WPARAM count = 0; count < 100; ++count) {
                PostMessageA(first_, kProgress, poster * 1000 + count, 0);
            }
        });
    }
    std::thread([this, &foundThere] {
        PostMessageA(nullptr, WM_USER, 0, 0);
        MSG message{};
        foundThere = PeekMessageA(&message, nullptr, kProgress, kProgress, PM_REMOVE);
        DestroyMessageWindow(first_); // not this thread's to destroy
    }).join();
    for (std::thread& poster : posters) {
        poster.join();
    }
    EXPECT_EQ(foundThere, 0);
    std::vector<WPARAM> next(3, 0);
    const Words words = Drain(nullptr, 0, 0);
    EXPECT_EQ(words.size(), 300U);
    for (const WPARAM word : words) {
        EXPECT_EQ(word % 1000, next[word / 1000]++);
    }
}

TEST_F(Messages, WindowEndsWithItsThread)
{
    HWND window = nullptr;
    std::thread([&window] {
        window = CreateMessageWindow([](UINT, WPARAM, LPARAM) { return LRESULT{1}; });
        EXPECT_NE(PostMessageA(window, kProgress, 0, 0), 0);
    }).join();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(PostMessageA(window, kProgress, 0, 0), 0);
    EXPECT_EQ(SendMessageA(window, kProgress, 0, 0), 0);
}

TEST_F(Messages, FullQueueRefusesMore)
{
    int posted = 0;
    while (posted < 20000 && PostMessageA(first_, kProgress, 0, 0) != 0) {
        ++posted;
    }
    EXPECT_EQ(posted, 10000);
}

TEST_F(Messages, MainWindowBelongsToTheThread)
{
    EXPECT_EQ(GetMainWindow(), nullptr);
    SetMainWindow(first_);
    std::thread([] { EXPECT_EQ(GetMainWindow(), nullptr); }).join();
    EXPECT_EQ(GetMainWindow(), first_);
    SetMainWindow(nullptr);
    EXPECT_EQ(GetMainWindow(), nullptr);
}

} // namespace
