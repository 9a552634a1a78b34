#pragma once

#include <string>

#include "window.h"

namespace example {

/// A strip at the bottom of its parent that shows what the library works on, and how far it is. Hidden between works.
class ProgressWindow : public Window {
public:
    explicit ProgressWindow(HWND parent);

    /// Moves to the bottom of the parent, which has changed its size.
    void FollowParent();

protected:
    LRESULT Receive(UINT message, WPARAM word, LPARAM value) override;

private:
    void OnProgress(int word, LPARAM value);
    void Paint();

    std::string text_;
    int percent_ = 0;
};

} // namespace example
