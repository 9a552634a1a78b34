#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "tests/support/images.h"

using namespace corvane;

namespace {

// A window of the test's own, shown, with its own class and procedure, as an application has it.
class AppWindow {
public:
    explicit AppWindow(bool paintsItself = true)
    {
        WNDCLASSA description{};
        description.lpfnWndProc = Receive;
        description.cbWndExtra = sizeof(this);
        description.hInstance = GetModuleHandleA(nullptr);
        description.lpszClassName = "CorvaneTestWindow";
        RegisterClassA(&description);
        handle_ = CreateWindowExA(0, description.lpszClassName, "test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300,
                                  200, nullptr, nullptr, description.hInstance, nullptr);
        SetWindowLongPtrA(handle_, 0, reinterpret_cast<LONG_PTR>(this));
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            DispatchMessageA(&message);
        }
        paintsItself_ = paintsItself;
        paints = 0;
    }
    ~AppWindow() { DestroyWindow(handle_); }
    AppWindow(const AppWindow&) = delete;
    AppWindow& operator=(const AppWindow&) = delete;

    HWND Handle() const { return handle_; }

    std::vector<std::string> texts;
    std::vector<LPARAM> percents;
    int paints = 0;
    bool pressesEscape = false; ///< at the first percentage above 20

private:
    static LRESULT CALLBACK Receive(HWND handle, UINT message, WPARAM word, LPARAM value)
    {
        auto* const window = reinterpret_cast<AppWindow*>(GetWindowLongPtrA(handle, 0));
        if (window == nullptr || (message != WM_PAINT && message != kProgressMessage)) {
            return DefWindowProcA(handle, message, word, value);
        }
        message == WM_PAINT ? window->Paint() : window->Note(word, value);
        return 0;
    }

    void Paint()
    {
        ++paints;
        if (paintsItself_) {
            PAINTSTRUCT paint;
            BeginPaint(handle_, &paint);
            EndPaint(handle_, &paint);
        }
    }

    void Note(WPARAM word, LPARAM value)
    {
        if (word != kProgressStep) {
            texts.push_back(value == 0 ? "" : reinterpret_cast<const char*>(value));
            return;
        }
        percents.push_back(value);
        InvalidateRect(handle_, nullptr, 1);
        if (pressesEscape && value > 20) {
            keybd_event(VK_SPACE, 0, 0, 0);
            keybd_event(VK_ESCAPE, 0, 0, 0);
            pressesEscape = false;
        }
    }

    bool paintsItself_ = true;
    HWND handle_ = nullptr;
};

// What a window hears of an inversion of an image with so many rows.
void Invert(const AppWindow& window, int rows)
{
    CStlImage image = test::RandomImage({40, rows}, 1, 1);
    CImgInvert inverted(image);
    inverted.SetProgressHandle(window.Handle());
    inverted.Do(&image, nullptr, 1);
}

TEST(SystemWindow, HearsOfProgressAndIsPainted)
{
    const AppWindow window;
    Invert(window, 100);
    EXPECT_EQ(window.texts, (std::vector<std::string>{"Inverting...", ""}));
    ASSERT_EQ(window.percents.size(), 50U);
    EXPECT_EQ(window.percents.front(), 1);
    EXPECT_EQ(window.percents.back(), 99);
    EXPECT_EQ(window.paints, 50);
}

TEST(SystemWindow, ThatNeverSaysItIsPaintedDoesNotHoldUpTheWork)
{
    const AppWindow window(false);
    Invert(window, 4);
    EXPECT_EQ(window.percents.size(), 4U);
    EXPECT_GE(window.paints, 4);
}

TEST(SystemWindow, EscapeFromTheKeyboardCancelsARestoration)
{
    std::string said;
    platform::SetMessageBoxHandler([&said](const char* text, UINT) {
        said = text;
        return IDOK;
    });
    AppWindow window;
    SetForegroundWindow(window.Handle());
    SetFocus(window.Handle());
    window.pressesEscape = true;
    const CStlImage source = test::RandomImage({64, 64}, 1, 2);
    CImgLucy restored(source);
    restored.SetProgressHandle(window.Handle());
    EXPECT_EQ(restored.Do(1.3, 1.0, 0.0, 20, nullptr, 1), 0);
    EXPECT_EQ(said, "Cancelled");
    EXPECT_EQ(test::Samples(restored), test::Samples(source));
    platform::SetMessageBoxHandler({});
}

} // namespace
