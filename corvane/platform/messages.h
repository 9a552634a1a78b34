#pragma once

#include <functional>

#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

#ifndef _WIN32

/// Calls the window's procedure on the calling thread and returns its result.
/// Returns 0 for a window that is null, destroyed or unknown.
CORVANE_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Appends a message to the queue of the thread that made the window; a null window means the calling thread's queue.
/// Returns 0 for a window that is destroyed or unknown and when the queue holds 10,000 messages. Any thread may call.
CORVANE_API BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Ends the calling thread's message loop: its queue hands out WM_QUIT, with the exit code, once nothing else fits.
CORVANE_API void PostQuitMessage(int exitCode);

/// Looks for the oldest message of the calling thread that fits, and removes it when `remove` says PM_REMOVE.
/// A null window fits every message, a window its own; numbers must lie in first..last, where 0, 0 means any. WM_QUIT
/// fits whatever is asked for.
/// Returns non-zero when one was found and stored in `result`.
CORVANE_API BOOL PeekMessageA(MSG* result, HWND window, UINT first, UINT last, UINT remove);

/// Turns keys into characters on systems that do so; returns 0, since there is nothing to translate here.
CORVANE_API BOOL TranslateMessage(const MSG* message);

/// Hands a message to its window's procedure, as SendMessageA does.
CORVANE_API LRESULT DispatchMessageA(const MSG* message);

#endif

namespace corvane::platform {

/// What a window does with a message. It must not throw; it may destroy its own window.
using WindowProcedure = std::function<LRESULT(UINT message, WPARAM wParam, LPARAM lParam)>;

/// Makes a window that only receives messages. It belongs to the calling thread and lives until it is destroyed there
/// or the thread ends. Returns null for an empty procedure or when the system has no window to give.
CORVANE_API HWND CreateMessageWindow(WindowProcedure procedure);

/// Destroys a window of the calling thread with the messages still queued for it; ignores any other handle.
CORVANE_API void DestroyMessageWindow(HWND window);

/// Sets the window that new images of the calling thread report progress to; null for none.
CORVANE_API void SetMainWindow(HWND window);

/// The calling thread's main window; null until it is set.
CORVANE_API HWND GetMainWindow();

} // namespace corvane::platform
