#include "corvane/platform/messages.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

using corvane::platform::WindowProcedure;

namespace {

constexpr std::size_t kQueueLimit = 10000;

struct Queue {
    std::mutex mutex;
    std::deque<MSG> messages;
    std::optional<int> exitCode; ///< the thread's loop is to end
};

struct Window {
    WindowProcedure procedure;
    std::shared_ptr<Queue> queue; // of the thread that made the window
};

// Handles count up and are never used again, so that a stale one is recognised.
class WindowTable {
public:
    HWND Add(std::shared_ptr<const Window> window)
    {
        const std::lock_guard lock(mutex_);
        const auto handle = reinterpret_cast<HWND>(++last_);
        windows_.emplace(handle, std::move(window));
        return handle;
    }

    std::shared_ptr<const Window> Find(HWND handle)
    {
        const std::lock_guard lock(mutex_);
        const auto found = windows_.find(handle);
        return found == windows_.end() ? nullptr : found->second;
    }

    // Windows are handed out of the lock before they die: a procedure's destructor may call back in here.
    std::shared_ptr<const Window> Remove(HWND handle)
    {
        const std::lock_guard lock(mutex_);
        auto node = windows_.extract(handle);
        return node.empty() ? nullptr : std::move(node.mapped());
    }

    std::vector<std::shared_ptr<const Window>> RemoveAllOf(const Queue* queue)
    {
        std::vector<std::shared_ptr<const Window>> removed;
        const std::lock_guard lock(mutex_);
        for (auto entry = windows_.begin(); entry != windows_.end();) {
            if (entry->second->queue.get() == queue) {
                removed.push_back(std::move(entry->second));
                entry = windows_.erase(entry);
            } else {
                ++entry;
            }
        }
        return removed;
    }

private:
    std::mutex mutex_;
    std::uintptr_t last_ = 0;
    std::unordered_map<HWND, std::shared_ptr<const Window>> windows_;
};

// Never destroyed: threads may still end, and give their windows back, after the program's statics are gone.
WindowTable& TheWindows()
{
    static auto& windows = *new WindowTable;
    return windows;
}

// The calling thread's queue; its windows go when the thread ends.
class ThreadQueue {
public:
    ThreadQueue() = default;
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;
    ~ThreadQueue() { TheWindows().RemoveAllOf(queue_.get()); }

    static const std::shared_ptr<Queue>& Current()
    {
        thread_local const ThreadQueue current;
        return current.queue_;
    }

private:
    std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
};

DWORD Milliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

BOOL Append(Queue& queue, const MSG& message)
{
    const std::lock_guard lock(queue.mutex);
    if (queue.messages.size() >= kQueueLimit) {
        return 0;
    }
    queue.messages.push_back(message);
    return 1;
}

} // namespace

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    // Held during the call: the procedure may destroy its own window.
    const std::shared_ptr<const Window> receiver = TheWindows().Find(window);
    return receiver ? receiver->procedure(message, wParam, lParam) : 0;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const MSG posted{window, message, wParam, lParam, Milliseconds(), {0, 0}};
    if (window == nullptr) {
        return Append(*ThreadQueue::Current(), posted);
    }
    const std::shared_ptr<const Window> receiver = TheWindows().Find(window);
    return receiver ? Append(*receiver->queue, posted) : 0;
}

void PostQuitMessage(int exitCode)
{
    Queue& queue = *ThreadQueue::Current();
    const std::lock_guard lock(queue.mutex);
    queue.exitCode = exitCode;
}

BOOL PeekMessageA(MSG* result, HWND window, UINT first, UINT last, UINT remove)
{
    const auto fits = [=](const MSG& message) {
        const bool inRange = (first == 0 && last == 0) || (message.message >= first && message.message <= last);
        return inRange && (window == nullptr || message.hwnd == window);
    };
    Queue& queue = *ThreadQueue::Current();
    const std::lock_guard lock(queue.mutex);
    const bool isRemoved = (remove & PM_REMOVE) != 0;
    const auto found = std::find_if(queue.messages.begin(), queue.messages.end(), fits);
    if (found != queue.messages.end()) {
        *result = *found;
        if (isRemoved) {
            queue.messages.erase(found);
        }
        return 1;
    }
    if (!queue.exitCode) {
        return 0;
    }
    *result = {nullptr, WM_QUIT, static_cast<WPARAM>(*queue.exitCode), 0, Milliseconds(), {0, 0}};
    if (isRemoved) {
        queue.exitCode.reset();
    }
    return 1;
}

BOOL TranslateMessage(const MSG*)
{
    return 0;
}

LRESULT DispatchMessageA(const MSG* message)
{
    return SendMessageA(message->hwnd, message->message, message->wParam, message->lParam);
}

namespace corvane::platform {

HWND CreateMessageWindow(WindowProcedure procedure)
{
    if (!procedure) {
        return nullptr;
    }
    return TheWindows().Add(std::make_shared<const Window>(Window{std::move(procedure), ThreadQueue::Current()}));
}

void DestroyMessageWindow(HWND window)
{
    Queue& queue = *ThreadQueue::Current();
    std::shared_ptr<const Window> owned = TheWindows().Find(window);
    if (!owned || owned->queue.get() != &queue) {
        return;
    }
    TheWindows().Remove(window);
    const std::lock_guard lock(queue.mutex);
    std::erase_if(queue.messages, [=](const MSG& message) { return message.hwnd == window; });
}

} // namespace corvane::platform
