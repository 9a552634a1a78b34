#include "picture_window.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "bitmap_file.h"
#include "open_dialog.h"

namespace example {
namespace {

constexpr UINT kUntilOpened = MF_STRING | MF_GRAYED;

HMENU MakeMenu()
{
    HMENU file = CreatePopupMenu();
    AppendMenuW(file, MF_STRING, kOpen, L"&Open...");
    AppendMenuW(file, kUntilOpened, kCopy, L"&Copy");
    AppendMenuW(file, MF_STRING, kExit, L"E&xit");
    HMENU image = CreatePopupMenu();
    AppendMenuW(image, kUntilOpened, kInvert, L"&Invert");
    AppendMenuW(image, kUntilOpened, kRestore, L"&Restore");
    HMENU bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), L"&File");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(image), L"&Image");
    return bar;
}

/// Says that the image is being worked on, as long as it lives.
class Work {
public:
    explicit Work(bool& isWorking) : isWorking_(isWorking) { isWorking_ = true; }
    ~Work() { isWorking_ = false; }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

private:
    bool& isWorking_;
};

/// Draws a bitmap as large as the area allows, but not enlarged.
void Draw(HDC target, const RECT& area, HGLOBAL block)
{
    const LockedDib dib(block);
    const int width = static_cast<int>(dib.Info().bmiHeader.biWidth);
    const int height = static_cast<int>(dib.Info().bmiHeader.biHeight);
    const double scale =
        std::min({1.0, static_cast<double>(area.right) / width, static_cast<double>(area.bottom) / height});
    SetStretchBltMode(target, HALFTONE);
    StretchDIBits(target, 0, 0, static_cast<int>(width * scale), static_cast<int>(height * scale), 0, 0, width, height,
                  dib.Pixels(), &dib.Info(), DIB_RGB_COLORS, SRCCOPY);
}

} // namespace

PictureWindow::PictureWindow()
{
    Open({.className = kPictureWindowClass,
          .title = L"Corvane",
          .style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
          .background = COLOR_APPWORKSPACE,
          .menu = MakeMenu()});
    progress_.emplace(Handle());
    corvane::platform::SetMainWindow(progress_->Handle()); // of every image that this thread makes from now on
}

void PictureWindow::OpenFile(const std::filesystem::path& file)
try {
    CStlImage image = ReadBitmapFile(file);
    Show(image);
    for (const UINT command : {kCopy, kInvert, kRestore}) {
        EnableMenuItem(GetMenu(Handle()), command, MF_ENABLED);
    }
    SetWindowTextW(Handle(), (file.filename().wstring() + L" - Corvane").c_str());
} catch (const std::exception& error) {
    const std::string reason = error.what();
    const std::wstring text = file.filename().wstring() + L": " + std::wstring(reason.begin(), reason.end());
    MessageBoxW(Handle(), text.c_str(), L"Corvane", MB_OK | MB_ICONERROR);
}

LRESULT PictureWindow::Receive(UINT message, WPARAM word, LPARAM value)
{
    if (isWorking_ && (message == WM_COMMAND || message == WM_CLOSE)) {
        return 0; // sent, not posted: such messages come in between two steps of the library
    }
    switch (message) {
    case WM_COMMAND:
        Do(LOWORD(word));
        return 0;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SIZE:
        if (progress_) { // the first size comes before the strip
            progress_->FollowParent();
        }
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return Window::Receive(message, word, value);
    }
}

void PictureWindow::Do(int command)
{
    UpdateWindow(Handle()); // where the menu was; the first step of the work may be some time ahead
    switch (command) {
    case kOpen:
        if (const auto file = AskForBitmap(Handle()); !file.empty()) {
            OpenFile(file);
        }
        break;
    case kCopy:
        return Copy();
    case kExit:
        DestroyWindow(Handle());
        break;
    case kInvert:
        return Invert();
    case kRestore:
        return Restore();
    default:
        break;
    }
}

void PictureWindow::Copy()
{
    DibBlock block(image_.GetDib(24));
    if (block == nullptr) {
        AfxThrowMemoryException();
    }
    if (OpenClipboard(Handle()) == 0) {
        throw std::runtime_error("Another program is using the clipboard.");
    }
    EmptyClipboard();
    if (SetClipboardData(CF_DIB, block.get()) != nullptr) {
        block.release(); // the clipboard's from now on
    }
    CloseClipboard();
}

void PictureWindow::Invert()
{
    const Work work(isWorking_);
    CImgInvert result(image_);
    result.Do(&image_, nullptr, 1);
    Show(result);
}

void PictureWindow::Restore()
{
    const Work work(isWorking_);
    constexpr double kSigma = 1.2; // of the blur [pixels]
    constexpr double kGain = 1.0;
    constexpr double kReadNoise = 12.0; // about that of a dark sky in a picture for the screen [display values]
    constexpr int kIterations = 20;
    CImgLucy result(image_);
    if (result.Do(kSigma, kGain, kReadNoise, kIterations, nullptr, 1) != 0) {
        Show(result);
    }
}

void PictureWindow::Show(CStlImage& image)
{
    DibBlock block(image.GetDib(24));
    if (block == nullptr) {
        AfxThrowMemoryException();
    }
    image_.Swap(&image);
    shown_ = std::move(block);
    InvalidateRect(Handle(), nullptr, TRUE);
}

void PictureWindow::Paint()
{
    PAINTSTRUCT paint{};
    HDC target = BeginPaint(Handle(), &paint);
    RECT area{};
    GetClientRect(Handle(), &area);
    if (shown_ != nullptr) {
        Draw(target, area, shown_.get());
    }
    EndPaint(Handle(), &paint);
}

} // namespace example
