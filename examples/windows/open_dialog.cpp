#include "open_dialog.h"

#include <commdlg.h>

namespace example {

std::filesystem::path AskForBitmap(HWND owner)
{
    wchar_t name[MAX_PATH] = L"";
    OPENFILENAMEW request{};
    request.lStructSize = sizeof request;
    request.hwndOwner = owner;
    request.lpstrFilter = L"Bitmaps (*.bmp)\0*.bmp\0";
    request.lpstrFile = name;
    request.nMaxFile = MAX_PATH;
    request.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
    return GetOpenFileNameW(&request) != 0 ? name : L"";
}

} // namespace example
