#pragma once

#include <functional>

#include "corvane/platform/export.h"
#include "corvane/platform/types.h"

/// Shows a text to the user and returns the answer. Without a handler: one line on standard error, and IDOK.
CORVANE_API int AfxMessageBox(const char* text, UINT type = MB_OK, UINT help = 0);

/// Shows the wait cursor; calls nest.
CORVANE_API void BeginWaitCursor();

/// Takes back one BeginWaitCursor; a call without one does nothing.
CORVANE_API void EndWaitCursor();

namespace corvane::platform {

/// Sets what AfxMessageBox does, for all threads; an empty handler brings the default back.
CORVANE_API void SetMessageBoxHandler(std::function<int(const char* text, UINT type)> handler);

/// Sets what is told when the wait cursor appears (true) and goes (false), for all threads; may be empty.
/// Nested calls of Begin and End reach it at the outermost change only.
CORVANE_API void SetWaitCursorHandler(std::function<void(bool on)> handler);

} // namespace corvane::platform
