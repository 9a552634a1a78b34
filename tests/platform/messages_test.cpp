#include "corvane/platform/messages.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace corvane::platform;

namespace {

constexpr UINT kProgress = WM_USER + 0x70;
using Words = std::vector<WPARAM>;

class Messages : public testing::Test {
protected:
    ~Messages() override
    {
        DestroyMessageWindow(first_);
        DestroyMessageWindow(second_);
        Drain();
    }

    static Words Drain(HWND window = nullptr, UINT from = 0, UINT to = 0)
    {
        Words words;
        for (MSG message{}; PeekMessageA(&message, window, from, to, PM_REMOVE) != 0;) {
            words.push_back(message.wParam);
        }
        return words;
    }

    HWND first_ =
        CreateMessageWindow([](UINT, WPARAM word, LPARAM value) { return static_cast<LRESULT>(word) * 10 + value; });
    HWND second_ = CreateMessageWindow([](UINT, WPARAM, LPARAM) { return LRESULT{7}; });
};

TEST_F(Messages, PeekingFiltersByNumberAndWindowAndKeepsOrder)
{
    const std::pair<HWND, UINT> posted[] = {
        {first_, WM_KEYDOWN}, {second_, WM_PAINT}, {first_, WM_KEYDOWN}, {nullptr, WM_USER}, {second_, WM_KEYDOWN}};
    const std::tuple<HWND, UINT, UINT, Words, Words> cases[] = {
        {nullptr, 0, 0, {1, 2, 3, 4, 5}, {}},
        {nullptr, WM_KEYDOWN, WM_KEYDOWN, {1, 3, 5}, {2, 4}},
        {nullptr, WM_PAINT + 1, WM_USER, {1, 3, 4, 5}, {2}},
        {first_, 0, 0, {1, 3}, {2, 4, 5}},
        {second_, WM_KEYDOWN, WM_KEYDOWN, {5}, {1, 2, 3, 4}},
    };
    for (const auto& [window, from, to, taken, left] : cases) {
        for (WPARAM word = 0; const auto& [receiver, number] : posted) {
            ASSERT_NE(PostMessageA(receiver, number, ++word, 0), 0);
        }
        EXPECT_EQ(Drain(window, from, to), taken) << "range " << from << ".." << to;
        EXPECT_EQ(Drain(), left) << "range " << from << ".." << to;
    }
}

TEST_F(Messages, PeekingMayLeaveTheMessage)
{
    PostMessageA(first_, kProgress, 1, 9);
    MSG message{};
    EXPECT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE), 0);
    EXPECT_EQ(Drain(), Words{1});
    EXPECT_EQ(DispatchMessageA(&message), 19);
}

TEST_F(Messages, DestroyedWindowTakesItsMessagesAlongAndIsIgnored)
{
    PostMessageA(first_, kProgress, 1, 0);
    DestroyMessageWindow(first_);
    DestroyMessageWindow(first_);
    EXPECT_EQ(Drain(), Words{});
    for (HWND gone : {first_, HWND{nullptr}, reinterpret_cast<HWND>(this)}) {
        MSG message{};
        message.hwnd = gone;
        EXPECT_EQ(SendMessageA(gone, kProgress, 1, 0), 0);
        EXPECT_EQ(DispatchMessageA(&message), 0);
        EXPECT_EQ(PostMessageA(gone, kProgress, 1, 0) != 0, gone == nullptr);
    }
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
            EXPECT_EQ(Drain(), Words{});
            DestroyMessageWindow(first_); // not this thread's to destroy
        });
    }
    std::ranges::for_each(posters, &std::thread::join);
    Words next(3, 0);
    for (const WPARAM word : Drain()) {
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
    EXPECT_EQ(PostMessageA(window, kProgress, 0, 0) + SendMessageA(window, kProgress, 0, 0), 0);
}

} // namespace
