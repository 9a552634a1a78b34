// corvane-window [FILE]: shows a bitmap and lets the library work on it. The first program to copy from.

#include <exception>
#include <filesystem>

#include <corvane/corvane.h>
#include <shellapi.h>

#include "picture_window.h"

namespace {

using namespace corvane::platform;

/// The file named on the command line; an empty path when there is none.
std::filesystem::path NamedFile()
{
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::filesystem::path file = count > 1 ? words[1] : L"";
    LocalFree(words);
    return file;
}

int RunMessages()
{
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, char*, int show)
try {
    example::PictureWindow window;
    SetMessageBoxHandler(
        [&](const char* text, UINT type) { return MessageBoxA(window.Handle(), text, "Corvane", type); });
    ShowWindow(window.Handle(), show);
    if (const auto file = NamedFile(); !file.empty()) {
        window.OpenFile(file);
    }
    const int status = RunMessages();
    SetMessageBoxHandler({});
    return status;
} catch (const std::exception& error) {
    MessageBoxA(nullptr, error.what(), "Corvane", MB_OK | MB_ICONERROR);
    return 1;
}
