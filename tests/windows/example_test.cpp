// The example program from outside, as its user meets it: its windows, its menu, the clipboard.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>
#include <process.h>

#include "examples/windows/picture_window.h"

namespace {

constexpr DWORD kLimit = 30000;            // for everything that is waited for [ms]
constexpr int kWidth = 301, kHeight = 200; // enough that a restoration takes longer than a key's way
constexpr std::size_t kRow = 904, kAhead = 56, kRows = kRow * kHeight; // bytes of a row, before the rows, of them all

// A colour bitmap whose samples tell their place, or its negative, with a gap between header and rows.
std::string BitmapFile(std::size_t mask = 0)
{
    const BITMAPINFOHEADER info{40, kWidth, kHeight, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    std::string file(kAhead + kRows, '\0');
    file.replace(0, 2, "BM")[10] = kAhead;
    std::memcpy(&file[14], &info, sizeof info);
    for (std::size_t i = 0; i < kRows; ++i) {
        file[kAhead + i] = i % kRow < 3 * kWidth ? static_cast<char>((i / kRow * 7 + i % kRow) ^ mask) : '\0';
    }
    return file;
}

struct Program {
    explicit Program(const std::string& bytes)
    {
        const auto file = std::filesystem::temp_directory_path() / L"corvane-\u0161\u00e9.bmp";
        std::ofstream(file, std::ios::binary) << bytes;
        const wchar_t* const name = _wgetenv(L"CORVANE_WINDOW_EXAMPLE");
        const std::intptr_t started = name == nullptr ? -1 : _wspawnl(_P_NOWAIT, name, name, file.c_str(), nullptr);
        if (started == -1) {
            throw std::runtime_error("CORVANE_WINDOW_EXAMPLE names no program");
        }
        process = reinterpret_cast<HANDLE>(started);
        WaitForInputIdle(process, kLimit); // the file has been read then
        std::filesystem::remove(file);
    }
    ~Program() { TerminateProcess(process, 99); } // does nothing when it has ended
    HWND Find(const wchar_t* windowClass = example::kPictureWindowClass, const wchar_t* title = nullptr) const
    {
        HWND window = nullptr;
        for (const auto end = GetTickCount64() + kLimit; !IsWindowVisible(window) && GetTickCount64() < end; Sleep(5)) {
            window = FindWindowW(windowClass, title);
        }
        return window;
    }
    void Do(int command) const { SendMessageTimeoutW(Find(), WM_COMMAND, command, 0, SMTO_NORMAL, kLimit, nullptr); }
    std::string CloseMessageBox() const
    {
        char text[256] = "";
        const HWND box = Find(L"#32770", L"Corvane");
        SendDlgItemMessageA(box, 0xFFFF, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        return text;
    }
    std::string CopiedRows() const
    {
        Do(example::kCopy);
        OpenClipboard(nullptr);
        const HGLOBAL block = GetClipboardData(CF_DIB);
        const std::string rows(example::LockedDib(block).Bytes() + 40, GlobalSize(block) < 40 + kRows ? 0 : kRows);
        CloseClipboard();
        return rows;
    }
    bool Ends() const
    {
        DWORD status = 98;
        PostMessageW(Find(), WM_CLOSE, 0, 0);
        return WaitForSingleObject(process, kLimit) == 0 && GetExitCodeProcess(process, &status) && status == 0;
    }
    HANDLE process;
};

} // namespace

TEST(WindowExample, InvertsCopiesAndRestoresUntilEscape)
{
    const Program program(BitmapFile());
    const std::string rows = BitmapFile().substr(kAhead), negative = BitmapFile(0xFF).substr(kAhead);
    EXPECT_TRUE(program.CopiedRows() == rows);
    program.Do(example::kInvert);
    EXPECT_TRUE(program.CopiedRows() == negative);
    PostMessageW(program.Find(), WM_COMMAND, example::kRestore, 0);
    PostMessageW(program.Find(), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_EQ(program.CloseMessageBox(), "Cancelled");
    EXPECT_TRUE(program.CopiedRows() == negative);
    program.Do(example::kRestore);
    EXPECT_FALSE(program.CopiedRows() == negative);
    EXPECT_TRUE(program.Ends());
}

TEST(WindowExample, TellsWhatIsWrongWithAFile)
{
    const std::tuple<std::size_t, std::uint32_t, const char*> table[] = {
        {0, 0x4D50, "not a bitmap"}, {10, 53, "begin within"},      {10, kAhead + 1, "file ends"},
        {14, ~0U, "begin within"},   {18, 0x7FFFFFFF, "file ends"}, {22, 1U << 31, "file ends"},
        {28, 16, "plain bitmaps"},   {46, ~0U, "begin within"}};
    for (const auto& [at, value, reason] : table) {
        std::string file = BitmapFile();
        std::memcpy(&file[at], &value, sizeof value);
        const Program program(file);
        EXPECT_NE(program.CloseMessageBox().find(reason), std::string::npos) << at;
        EXPECT_TRUE(program.Ends());
    }
}
