#include "tests/support/progress_window.h"

#include <utility>

namespace corvane::test {

ProgressWindow::ProgressWindow()
    : window_(platform::CreateMessageWindow(
          [this](UINT message, WPARAM word, LPARAM value) { return Receive(message, word, value); }))
{}

ProgressWindow::~ProgressWindow()
{
    platform::DestroyMessageWindow(window_);
}

std::vector<std::string> ProgressWindow::Take()
{
    return std::exchange(messages_, {});
}

LRESULT ProgressWindow::Receive(UINT message, WPARAM word, LPARAM value)
{
    paints_ += message == WM_PAINT ? 1 : 0;
    if (message == 0x470) {
        const char* const text = word == 1 || value == 0 ? "null" : reinterpret_cast<const char*>(value);
        messages_.push_back(std::to_string(word) + ":" + (word == 1 ? std::to_string(value) : text));
    }
    return 0;
}

std::vector<std::string> Counted(const std::string& text, int total, const std::vector<int>& steps)
{
    std::vector<std::string> messages{"0:" + text};
    const int step = total / 50 < 1 ? 1 : total / 50;
    int count = 0;
    int threshold = 0;
    for (const int n : steps) {
        count += n;
        if (count > threshold) {
            messages.push_back("1:" + std::to_string(static_cast<int>(static_cast<double>(count) / total * 100.0)));
            threshold += step;
        }
    }
    messages.push_back("2:null");
    return messages;
}

} // namespace corvane::test
