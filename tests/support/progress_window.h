#pragma once

#include <string>
#include <vector>

#include "corvane/platform/messages.h"

namespace corvane::test {

/// A window that writes down the progress messages that it gets, as "0:text", "1:percent", "2:null", "4:text".
class ProgressWindow {
public:
    ProgressWindow();
    ~ProgressWindow();
    ProgressWindow(const ProgressWindow&) = delete;
    ProgressWindow& operator=(const ProgressWindow&) = delete;

    HWND Handle() const { return window_; }
    /// The messages since the last call.
    std::vector<std::string> Take();
    /// How many paint messages have been dispatched to it.
    int Paints() const { return paints_; }

private:
    LRESULT Receive(UINT message, WPARAM word, LPARAM value);

    HWND window_;
    std::vector<std::string> messages_;
    int paints_ = 0;
};

/// What the channel sends in counted mode for one operation that reports `steps` in turn.
std::vector<std::string> Counted(const std::string& text, int total, const std::vector<int>& steps);

} // namespace corvane::test
