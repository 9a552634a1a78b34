#include "corvane/platform/messages.h"

#include <memory>
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

TEST_F(Messages, PeekingFiltersByNumberAndWindowAndKeepsOrder)
{
    const auto post = [this] {
        ASSERT_NE(PostMessageA(first_, WM_KEYDOWN, 1, 0), 0);
        ASSERT_NE(PostMessageA(second_, WM_PAINT, 2, 0), 0);
        ASSERT_NE(PostMessageA(first_, WM_KEYDOWN, 3, 0), 0);
        ASSERT_NE(PostMessageA(nullptr, WM_USER, 4, 0), 0);
        ASSERT_NE(PostMessageA(second_, WM_KEYDOWN, 5, 0), 0);
    };
    const struct {
        HWND window;
        UINT from, to;
        Words taken, left;
    } cases[] = {
        {nullptr, 0, 0, {1, 2, 3, 4, 5}, {}},
        {nullptr, WM_KEYDOWN, WM_KEYDOWN, {1, 3, 5}, {2, 4}},
        {nullptr, WM_PAINT + 1, WM_USER, {1, 3, 4, 5}, {2}},
        {first_, 0, 0, {1, 3}, {2, 4, 5}},
        {second_, WM_KEYDOWN, WM_KEYDOWN, {5}, {1, 2, 3, 4}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "range " << c.from << ".." << c.to);
        post();
        EXPECT_EQ(Drain(c.window, c.from, c.to), c.taken);
        EXPECT_EQ(Drain(nullptr, 0, 0), c.left);
    }
}

TEST_F(Messages, PeekingWithoutRemovalLeavesTheMessage)
{
    int posted = 0;
    while (posted < 20000 && PostMessageA(first_, kProgress, 1, 9) != 0) {
        ++posted;
    }
    EXPECT_EQ(Drain(nullptr, 0, 0).size(), 10000U) << "a full queue refuses more";
    PostMessageA(first_, kProgress, 1, 9);
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE), 0);
    ASSERT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_EQ(message.hwnd, first_);
    EXPECT_EQ(message.message, kProgress);
    EXPECT_EQ(message.lParam, 9);
    EXPECT_EQ(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_TRUE(seen_.empty());
    EXPECT_EQ(DispatchMessageA(&message), 19);
    EXPECT_EQ(SendMessageA(second_, kProgress, 4, -3), 7);
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

TEST_F(Messages, PostingFromOtherThreadsReachesTheOwnersQueueOnly)
{
    std::vector<std::thread> posters;
    for (WPARAM poster = 0; poster < 3; ++poster) {
        posters.emplace_back([this, poster] {
            for (WPARAM count = 0; count < 100; ++count) {
                PostMessageA(first_, kProgress, poster * 1000 + count, 0);
            }
            EXPECT_EQ(Drain(nullptr, 0, 0), Words{});
            DestroyMessageWindow(first_); // not this thread's to destroy
        });
    }
    for (std::thread& poster : posters) {
        poster.join();
    }
    std::vector<WPARAM> next(3, 0);
    for (const WPARAM word : Drain(nullptr, 0, 0)) {
        EXPECT_EQ(word % 1000, next[word / 1000]++);
    }
    EXPECT_EQ(next, Words(3, 100));
}

TEST_F(Messages, WindowsEndWithTheirThread)
{
    SetMainWindow(first_);
    HWND window = nullptr;
    std::thread([&window] {
        EXPECT_EQ(GetMainWindow(), nullptr);
        window = CreateMessageWindow([](UINT, WPARAM, LPARAM) { return LRESULT{1}; });
        EXPECT_NE(PostMessageA(window, kProgress, 0, 0), 0);
    }).join();
    EXPECT_EQ(GetMainWindow(), first_);
    SetMainWindow(nullptr);
    EXPECT_EQ(PostMessageA(window, kProgress, 0, 0), 0);
    EXPECT_EQ(SendMessageA(window, kProgress, 0, 0), 0);
}

} // namespace
