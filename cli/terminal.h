#pragma once

#include <string>

namespace corvane::cli {

/// True when the file descriptor is a terminal.
bool IsTerminal(int descriptor);

/// Columns of the terminal behind the file descriptor; 80 when it is none.
int TerminalWidth(int descriptor);

/// The text in lines of at most `width` columns, every line indented, broken at blanks. The first line begins with
/// `head`, in its place of the indent, or above the text when it is too long for that.
std::string Wrapped(const std::string& head, const std::string& text, int indent, int width);

} // namespace corvane::cli
