#pragma once

#include <string>
#include <vector>

#include "corvane/platform/application.h"
#include "corvane/platform/messages.h"
#include "tests/support/images.h"
#include "tests/support/progress_window.h"

namespace corvane::test {

/// The texts that restore(image) shows on the way.
template <class Image, class Restore>
std::vector<std::string> TextsOf(Image image, Restore restore)
{
    ProgressWindow window;
    image.SetProgressHandle(window.Handle());
    EXPECT_EQ(restore(image), 1);
    std::vector<std::string> messages = window.Take();
    std::erase_if(messages, [](const std::string& message) { return message[0] == '1'; });
    return messages;
}

/// Runs restore(image), which shows progress, with ESC pressed at its first poll, its second, and so on until it ends
/// by itself: each time it must return 0, say so, and leave the image as it is. Returns the number of polls.
template <class Image, class Restore>
int ExpectCancellable(const CStlImage& source, Restore restore)
{
    std::string said;
    platform::SetMessageBoxHandler([&](const char* text, UINT type) {
        said = text + std::to_string(type);
        return 1;
    });
    int result = 0;
    int poll = 0;
    for (; result == 0; ++poll) {
        HWND window = nullptr;
        int steps = 0;
        window = platform::CreateMessageWindow([&](UINT, WPARAM word, LPARAM) {
            steps += word == 1 ? 1 : 0;
            return word == 1 && steps == poll + 1 ? PostMessageA(window, WM_KEYDOWN, VK_ESCAPE, 0) : 0;
        });
        Image image(source);
        image.SetProgressHandle(window);
        result = restore(image);
        platform::DestroyMessageWindow(window);
        EXPECT_TRUE(result == 1 || (Samples(image) == Samples(source) && steps == poll + 1)) << poll;
        EXPECT_EQ(said, result == 1 ? "" : "Cancelled" + std::to_string(MB_ICONINFORMATION)) << poll;
        said.clear();
    }
    platform::SetMessageBoxHandler({});
    return poll - 1;
}

/// Runs restore(image, rect): samples inside the rectangle, and no others, must change. One of the image's size is all.
template <class Image, class Restore>
void ExpectOnlyInside(const CStlImage& source, Restore restore)
{
    ForEachRect(source, [&](CRect* rect) {
        Image result(source);
        ASSERT_EQ(restore(result, rect), 1);
        for (int i = 0; i < source.GetWidth() * source.GetHeight(); ++i) {
            const int x = i % source.GetWidth();
            const int y = i / source.GetWidth();
            const bool isInside =
                rect == nullptr || (x >= rect->left && x < rect->right && y >= rect->top && y < rect->bottom);
            ASSERT_EQ(result.GetPixelGrayRaw(x, y, 0) != source.GetPixelGrayRaw(x, y, 0), isInside) << x << ' ' << y;
        }
    });
}

} // namespace corvane::test
