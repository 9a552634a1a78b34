#include "corvane/platform/messages.h"

#include <memory>
#include <unordered_map>
#include <utility>

namespace corvane::platform {
namespace {

constexpr char kClassName[] = "CorvaneMessageWindow";

// A window's procedure only ever runs on the window's own thread, and both go when the thread ends.
thread_local std::unordered_map<HWND, std::shared_ptr<const WindowProcedure>> procedures;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto found = procedures.find(window);
    if (found == procedures.end()) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    // Held during the call: the procedure may destroy its own window.
    const std::shared_ptr<const WindowProcedure> procedure = found->second;
    return (*procedure)(message, wParam, lParam);
}

ATOM RegisterWindowClass()
{
    WNDCLASSEXA description{};
    description.cbSize = sizeof(description);
    description.lpfnWndProc = Receive;
    description.hInstance = GetModuleHandleA(nullptr);
    description.lpszClassName = kClassName;
    return RegisterClassExA(&description);
}

} // namespace

HWND CreateMessageWindow(WindowProcedure procedure)
{
    static const ATOM windowClass = RegisterWindowClass();
    if (!procedure || windowClass == 0) {
        return nullptr;
    }
    auto shared = std::make_shared<const WindowProcedure>(std::move(procedure));
    HWND window =
        CreateWindowExA(0, kClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleA(nullptr), nullptr);
    if (window != nullptr) {
        procedures[window] = std::move(shared);
    }
    return window;
}

void DestroyMessageWindow(HWND window)
{
    const auto found = procedures.find(window);
    if (found == procedures.end()) {
        return;
    }
    // Out of the table first: the system's own farewell messages are not for the procedure.
    const auto procedure = std::move(found->second);
    procedures.erase(found);
    DestroyWindow(window);
}

} // namespace corvane::platform
