#pragma once

#include <corvane/corvane.h>

namespace example {

/// A window of the system that hands its messages to an object. The object outlives the window.
class Window {
public:
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window();

    /// The system's name for it; null once it is destroyed.
    HWND Handle() const { return handle_; }

protected:
    /// What a new window is made of.
    struct Form {
        const wchar_t* className;
        const wchar_t* title;
        DWORD style;
        int background; ///< a COLOR_ number of the system
        HWND parent = nullptr;
        HMENU menu = nullptr;
    };

    Window() = default;
    /// Makes the window, of the system's usual size. Throws std::system_error when it has none to give.
    void Open(const Form& form);
    /// Answers a message. What it throws is shown to the user.
    virtual LRESULT Receive(UINT message, WPARAM word, LPARAM value);

private:
    static LRESULT CALLBACK Procedure(HWND handle, UINT message, WPARAM word, LPARAM value);
    LRESULT Answer(UINT message, WPARAM word, LPARAM value);

    HWND handle_ = nullptr;
};

} // namespace example
