#pragma once

#include <cstdint>

#include "corvane/platform/messages.h"

namespace corvane {

/// The messages that the base record sends to a window while it copies or converts samples: start, percent, end.
/// It sends nothing without a window or without a text, and never looks at the message queue.
class ProgressNotice {
public:
    ProgressNotice(HWND window, const char* text, std::uint64_t total);
    ~ProgressNotice();
    ProgressNotice(const ProgressNotice&) = delete;
    ProgressNotice& operator=(const ProgressNotice&) = delete;

    void Advance(std::uint64_t steps);

private:
    HWND window_;
    std::uint64_t total_;
    std::uint64_t done_ = 0;
    int percent_ = -1;
};

} // namespace corvane
