#pragma once

#include <filesystem>

#include <corvane/corvane.h>

namespace example {

/// Lets the user choose a bitmap file; an empty path when the user chose none.
std::filesystem::path AskForBitmap(HWND owner);

} // namespace example
