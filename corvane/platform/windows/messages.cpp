#include "corvane/platform/messages.h"

#include <memory>
#include <utility>

namespace corvane::platform {
namespace {

constexpr char kClassName[] = "CorvaneMessageWindow";

// The window keeps its procedure in its own extra bytes. A table of the thread's would have to be destroyed when the
// thread ends; threads that belong to another copy of the compiler's runtime, as a program's do, hang or crash over it.
// The price is that what a thread has not destroyed when it ends is not freed.
using SharedProcedure = std::shared_ptr<const WindowProcedure>;

std::unique_ptr<SharedProcedure> SetProcedure(HWND window, std::unique_ptr<SharedProcedure> procedure)
{
    const LONG_PTR before = SetWindowLongPtrA(window, 0, reinterpret_cast<LONG_PTR>(procedure.release()));
    return std::unique_ptr<SharedProcedure>(reinterpret_cast<SharedProcedure*>(before));
}

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto* const found = reinterpret_cast<const SharedProcedure*>(GetWindowLongPtrA(window, 0));
    if (found == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    // Held during the call: the procedure may destroy its own window.
    const SharedProcedure procedure = *found;
    return (*procedure)(message, wParam, lParam);
}

// The class belongs to the module that this code is in, and goes with it: nothing may call what is no longer loaded.
class WindowClass {
public:
    WindowClass()
    {
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           kClassName, &module_);
        WNDCLASSEXA description{};
        description.cbSize = sizeof(description);
        description.lpfnWndProc = Receive;
        description.cbWndExtra = sizeof(SharedProcedure*);
        description.hInstance = module_;
        description.lpszClassName = kClassName;
        atom_ = RegisterClassExA(&description);
    }
    ~WindowClass() { UnregisterClassA(kClassName, module_); }
    WindowClass(const WindowClass&) = delete;
    WindowClass& operator=(const WindowClass&) = delete;

    HWND Create() const
    {
        return CreateWindowExA(0, kClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, module_, nullptr);
    }
    bool IsOf(HWND window) const { return GetClassLongPtrA(window, GCW_ATOM) == atom_ && atom_ != 0; }

private:
    HMODULE module_ = nullptr;
    ATOM atom_ = 0;
};

const WindowClass& TheWindowClass()
{
    static const WindowClass windowClass;
    return windowClass;
}

} // namespace

HWND CreateMessageWindow(WindowProcedure procedure)
{
    if (!procedure) {
        return nullptr;
    }
    auto shared = std::make_unique<SharedProcedure>(std::make_shared<const WindowProcedure>(std::move(procedure)));
    HWND window = TheWindowClass().Create();
    if (window != nullptr) {
        SetProcedure(window, std::move(shared));
    }
    return window;
}

void DestroyMessageWindow(HWND window)
{
    if (!TheWindowClass().IsOf(window) || GetWindowThreadProcessId(window, nullptr) != GetCurrentThreadId()) {
        return;
    }
    // Taken out first: the system's own farewell messages are not for the procedure.
    const std::unique_ptr<SharedProcedure> procedure = SetProcedure(window, nullptr);
    DestroyWindow(window);
}

} // namespace corvane::platform
