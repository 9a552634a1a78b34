#include "corvane/platform/messages.h"

namespace corvane::platform {
namespace {

thread_local HWND mainWindow = nullptr;

} // namespace

void SetMainWindow(HWND window)
{
    mainWindow = window;
}

HWND GetMainWindow()
{
    return mainWindow;
}

} // namespace corvane::platform
