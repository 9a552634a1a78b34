#pragma once

#include <filesystem>
#include <optional>

#include "dib_block.h"
#include "progress_window.h"
#include "window.h"

namespace example {

/// The class of the picture's window, by which other programs find it.
inline constexpr wchar_t kPictureWindowClass[] = L"CorvaneWindowExample";

/// What the menu asks for: the word of WM_COMMAND.
enum Command : int {
    kOpen = 100,
    kCopy,
    kExit,
    kInvert,
    kRestore,
};

/// The main window: an image, the menu of what can be done with it, and the progress of that.
class PictureWindow : public Window {
public:
    /// Makes the window, not shown yet, and its strip the calling thread's main window.
    PictureWindow();

    /// Shows the image in a file. What is wrong with the file is told in a message box, and the old image stays.
    void OpenFile(const std::filesystem::path& file);

protected:
    LRESULT Receive(UINT message, WPARAM word, LPARAM value) override;

private:
    void Do(int command);
    void Copy();
    void Invert();
    void Restore();
    void Show(CStlImage& image);
    void Paint();

    std::optional<ProgressWindow> progress_;
    CStlImage image_;
    bool isWorking_ = false;
    DibBlock shown_; // what the screen shows of the image; it can be painted while the image is worked on
};

} // namespace example
