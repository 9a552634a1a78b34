#pragma once

#include <algorithm>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "stack/options.h"

namespace corvane::stack {

/// The progress channel of one step of the work. ESC ends the work with `Cancelled`.
class Progress {
public:
    /// Opens the channel. The window may be null: nothing is shown then, and ESC still counts.
    Progress(HWND window, const char* text, int total)
    {
        channel_.SetProgressHandle(window);
        channel_.ShowProgressInit(1, text, std::max(total, 1));
    }
    ~Progress() { channel_.ShowProgressEnd(nullptr); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Step()
    {
        if (channel_.ShowProgress(1) == 0) {
            throw Cancelled();
        }
    }

private:
    CStlImage channel_;
};

} // namespace corvane::stack
