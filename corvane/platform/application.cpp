#include "corvane/platform/application.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

namespace {

using MessageBoxHandler = std::function<int(const char* text, UINT type)>;
using WaitCursorHandler = std::function<void(bool on)>;

template <class Handler>
using Shared = std::shared_ptr<const Handler>; // handed out without a copy, which would need memory

struct Application {
    std::mutex mutex;
    Shared<MessageBoxHandler> showMessage;
    Shared<WaitCursorHandler> showWaitCursor;
    int waitDepth = 0;
};

Application& TheApplication()
{
    static Application application;
    return application;
}

template <class Handler>
Shared<Handler> Share(Handler handler)
{
    return handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
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
    Shared<WaitCursorHandler> handler;
    {
        const std::lock_guard lock(application.mutex);
        const int before = application.waitDepth;
        application.waitDepth = before + change > 0 ? before + change : 0;
        if ((before == 0) != (application.waitDepth == 0)) {
            handler = application.showWaitCursor;
        }
    }
    if (handler) {
        (*handler)(change > 0);
    }
}

} // namespace

int AfxMessageBox(const char* text, UINT type, UINT)
{
    Application& application = TheApplication();
    Shared<MessageBoxHandler> handler;
    {
        const std::lock_guard lock(application.mutex);
        handler = application.showMessage;
    }
    const char* shown = text == nullptr ? "" : text;
    return handler ? (*handler)(shown, type) : PrintMessage(shown);
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
    Shared<MessageBoxHandler> shared = Share(std::move(handler));
    const std::lock_guard lock(TheApplication().mutex);
    TheApplication().showMessage.swap(shared);
}

void SetWaitCursorHandler(std::function<void(bool on)> handler)
{
    Shared<WaitCursorHandler> shared = Share(std::move(handler));
    const std::lock_guard lock(TheApplication().mutex);
    TheApplication().showWaitCursor.swap(shared);
}

} // namespace corvane::platform
