#include "cli/terminal.h"

#include <sstream>

#include <sys/ioctl.h>
#include <unistd.h>

namespace corvane::cli {

bool IsTerminal(int descriptor)
{
    return isatty(descriptor) != 0;
}

int TerminalWidth(int descriptor)
{
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string Wrapped(const std::string& head, const std::string& text, int indent, int width)
{
    const std::string margin(static_cast<std::size_t>(indent), ' ');
    std::string result;
    std::string line = head;
    if (!line.empty() && line.size() + 2 > margin.size()) {
        result = line + "\n";
        line.clear();
    }
    line.resize(margin.size(), ' ');
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const bool startsLine = line.size() == margin.size();
        if (!startsLine && line.size() + 1 + word.size() > static_cast<std::size_t>(width)) {
            result += line + "\n";
            line = margin + word;
        } else {
            line += (startsLine ? "" : " ") + word;
        }
    }
    return result + line + "\n";
}

} // namespace corvane::cli
