#include "window.h"

#include <exception>
#include <system_error>

namespace example {
namespace {

void RegisterWindowClass(const wchar_t* name, int background, WNDPROC procedure)
{
    WNDCLASSW description{};
    description.style = CS_HREDRAW | CS_VREDRAW;
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    description.hbrBackground = GetSysColorBrush(background);
    description.lpszClassName = name;
    RegisterClassW(&description);
}

} // namespace

Window::~Window()
{
    if (handle_ != nullptr) {
        SetWindowLongPtrW(handle_, GWLP_USERDATA, 0); // its farewell messages find no object any more
        DestroyWindow(handle_);
    }
}

void Window::Open(const Form& form)
{
    RegisterWindowClass(form.className, form.background, Procedure);
    CreateWindowExW(0, form.className, form.title, form.style, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                    CW_USEDEFAULT, form.parent, form.menu, GetModuleHandleW(nullptr), this);
    if (handle_ == nullptr) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "no window");
    }
}

LRESULT Window::Receive(UINT message, WPARAM word, LPARAM value)
{
    return DefWindowProcW(handle_, message, word, value);
}

LRESULT CALLBACK Window::Procedure(HWND handle, UINT message, WPARAM word, LPARAM value)
{
    if (message == WM_NCCREATE) {
        auto* const window = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(value)->lpCreateParams);
        window->handle_ = handle;
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
    }
    auto* const window = reinterpret_cast<Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
    return window == nullptr ? DefWindowProcW(handle, message, word, value) : window->Answer(message, word, value);
}

LRESULT Window::Answer(UINT message, WPARAM word, LPARAM value)
{
    LRESULT result = 0;
    try {
        result = Receive(message, word, value);
    } catch (const std::exception& error) { // the system called, and exceptions must not pass through it
        MessageBoxA(handle_, error.what(), "Corvane", MB_OK | MB_ICONERROR);
    }
    if (message == WM_NCDESTROY) {
        handle_ = nullptr;
    }
    return result;
}

} // namespace example
