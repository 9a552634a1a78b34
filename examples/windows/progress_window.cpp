#include "progress_window.h"

#include <algorithm>

namespace example {
namespace {

constexpr int kHeight = 48;
constexpr int kMargin = 6;
constexpr int kTextHeight = 18;

void DrawBar(HDC target, RECT frame, int percent)
{
    FrameRect(target, &frame, GetSysColorBrush(COLOR_WINDOWTEXT));
    InflateRect(&frame, -2, -2);
    frame.right = frame.left + (frame.right - frame.left) * percent / 100;
    FillRect(target, &frame, GetSysColorBrush(COLOR_HIGHLIGHT));
}

} // namespace

ProgressWindow::ProgressWindow(HWND parent)
{
    Open({.className = L"CorvaneProgressWindow",
          .title = L"",
          .style = WS_CHILD,
          .background = COLOR_BTNFACE,
          .parent = parent});
    FollowParent();
}

void ProgressWindow::FollowParent()
{
    RECT area{};
    GetClientRect(GetParent(Handle()), &area);
    MoveWindow(Handle(), 0, area.bottom - kHeight, area.right, kHeight, TRUE);
}

LRESULT ProgressWindow::Receive(UINT message, WPARAM word, LPARAM value)
{
    switch (message) {
    case corvane::kProgressMessage:
        OnProgress(static_cast<int>(word), value);
        return 0;
    case WM_PAINT:
        Paint();
        return 0;
    default:
        return Window::Receive(message, word, value);
    }
}

// A text is good during the call alone. Painting is left to the library, which dispatches it between two steps.
void ProgressWindow::OnProgress(int word, LPARAM value)
{
    switch (word) {
    case corvane::kProgressStart:
        percent_ = 0;
        [[fallthrough]];
    case corvane::kProgressText:
        text_ = reinterpret_cast<const char*>(value);
        ShowWindow(Handle(), SW_SHOWNA);
        break;
    case corvane::kProgressStep:
        percent_ = static_cast<int>(std::clamp<LPARAM>(value, 0, 100));
        break;
    case corvane::kProgressEnd:
        ShowWindow(Handle(), SW_HIDE);
        break;
    default:
        break;
    }
    InvalidateRect(Handle(), nullptr, TRUE);
}

void ProgressWindow::Paint()
{
    PAINTSTRUCT paint{};
    HDC target = BeginPaint(Handle(), &paint); // validates: what stays invalid is dispatched again
    RECT area{};
    GetClientRect(Handle(), &area);
    InflateRect(&area, -kMargin, -kMargin);
    SetBkMode(target, TRANSPARENT);
    RECT line = area;
    DrawTextA(target, text_.c_str(), -1, &line, DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX);
    area.top += kTextHeight;
    DrawBar(target, area, percent_);
    EndPaint(Handle(), &paint);
}

} // namespace example
