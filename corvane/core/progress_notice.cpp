#include "corvane/core/progress_notice.h"

#include "corvane/core/progress_message.h"

namespace corvane {
namespace {

void Send(HWND window, int word, LPARAM value)
{
    if (window != nullptr) {
        SendMessageA(window, kProgressMessage, static_cast<WPARAM>(word), value);
    }
}

} // namespace

ProgressNotice::ProgressNotice(HWND window, const char* text, std::uint64_t total)
    : window_(text == nullptr ? nullptr : window), total_(total)
{
    Send(window_, kProgressStart, reinterpret_cast<LPARAM>(text));
}

ProgressNotice::~ProgressNotice()
{
    Send(window_, kProgressEnd, 0);
}

void ProgressNotice::Advance(std::uint64_t steps)
{
    done_ += steps;
    const int percent =
        total_ == 0 ? 100 : static_cast<int>(static_cast<double>(done_) / static_cast<double>(total_) * 100.0);
    if (percent > percent_) {
        percent_ = percent;
        Send(window_, kProgressStep, percent);
    }
}

} // namespace corvane
