#include "corvane/platform/application.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace {

using MessageBoxHandler = std::function<int(const char* text, UINT type)>;
using WaitCursorHandler = std::function<void(bool on)>;

struct Application {
    std::mutex mutex;
    MessageBoxHandler showMessage;
    WaitCursorHandler showWaitCursor;
    int waitDepth = 0;
};

Application& TheApplication()
{
    static Application application;
    return application;
}

int PrintMessage(const char* text)
{
    std::fprintf(stderr, "%s\n", text);
    return IDOK;
}

// Handlers run outside the lock, so that they may call back in here.
void ChangeWaitDepth(int change)
{
    Application& application = TheApplication();
    WaitCursorHandler handler;
    {
        const std::lock_guard lock(application.mutex);
        const int before = application.waitDepth;
        application.waitDepth = before + change > 0 ? before + change : 0;
        if ((before == 0) != (application.waitDepth == 0)) {
            handler = application.showWaitCursor;
        }
    }
    if (handler) {
        handler(change > 0);
    }
}

} // namespace

int AfxMessageBox(const char* text, UINT type, UINT)
{
    Application& application = TheApplication();
    MessageBoxHandler handler;
    {
        const std::lock_guard lock(application.mutex);
        handler = application.showMessage;
    }
    const char* shown = text == nullptr ? "" : text;
    return handler ? handler(shown, type) : PrintMessage(shown);
}

void BeginWaitCursor()
{
    ChangeWaitDepth(1);
}

void EndWaitCursor()
{
    ChangeWaitDepth(-1);
}

namespace corvane::platform {

void SetMessageBoxHandler(std::function<int(const char* text, UINT type)> handler)
{
    const std::lock_guard lock(TheApplication().mutex);
    TheApplication().showMessage = std::move(handler);
}

void SetWaitCursorHandler(std::function<void(bool on)> handler)
{
    const std::lock_guard lock(TheApplication().mutex);
    TheApplication().showWaitCursor = std::move(handler);
}

} // namespace corvane::platform
