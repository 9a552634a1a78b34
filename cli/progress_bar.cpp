#include "cli/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "cli/cancel.h"
#include "cli/terminal.h"

namespace corvane::cli {
namespace {

constexpr int kBarWidth = 16;
constexpr auto kRedrawAfter = std::chrono::milliseconds(100);
// An estimate from less than this is a guess that jumps about.
constexpr double kSecondsBeforeEstimate = 1.0;
constexpr int kPercentBeforeEstimate = 2;
// How work that can be cancelled ends the text of its progress, and how a terminal says the same.
constexpr std::string_view kEscape = " (press ESC to cancel)";
constexpr std::string_view kControlC = " (Ctrl-C cancels)";

std::string TimeText(double seconds)
{
    const auto whole = std::lround(seconds);
    char text[32];
    if (whole < 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return text;
}

std::string Bar(int percent)
{
    const int filled = kBarWidth * percent / 100;
    return std::string(static_cast<std::size_t>(filled), '#') +
           std::string(static_cast<std::size_t>(kBarWidth - filled), '.');
}

} // namespace

void ProgressBar::Follow(const Progress& progress)
{
    switch (progress.state) {
    case Progress::State::kBegun:
        Start(progress.text);
        break;
    case Progress::State::kCounted:
        Step(static_cast<int>(100.0 * progress.done / std::max(progress.total, 1)));
        break;
    case Progress::State::kReached:
        Step(progress.done);
        break;
    case Progress::State::kMessage:
        text_ = progress.text;
        Draw();
        break;
    case Progress::State::kEnded:
        End();
        break;
    }
}

void ProgressBar::Start(const char* text)
{
    if (isTold_) {
        return;
    }
    text_ = text == nullptr ? "" : text;
    isCancellable_ = text_.ends_with(kEscape);
    text_.resize(text_.size() - (isCancellable_ ? kEscape.size() : 0));
    percent_ = 0;
    isRunning_ = true;
    started_ = Clock::now();
    Draw();
}

void ProgressBar::Step(int percent)
{
    percent_ = isTold_ ? percent_ : std::clamp(percent, 0, 100);
    Draw();
}

void ProgressBar::Show(const std::string& text, int percent)
{
    text_ = text;
    percent_ = percent;
    isTold_ = true;
    Draw();
}

void ProgressBar::CountFile(std::size_t number, std::size_t count)
{
    head_ = "[" + std::to_string(number) + "/" + std::to_string(count) + "] ";
}

void ProgressBar::Print(const std::string& text)
{
    unfinished_ += text;
    const std::size_t whole = unfinished_.rfind('\n') + 1;
    Clear();
    std::fputs(unfinished_.substr(0, whole).c_str(), stderr);
    unfinished_.erase(0, whole);
}

void ProgressBar::End()
{
    Clear();
    if (!unfinished_.empty()) {
        Print("\n");
    }
    if (style_.stages && isRunning_) {
        std::fprintf(stderr, "%s%s %.1f s\n", head_.c_str(), text_.c_str(), Elapsed());
    }
    isRunning_ = false;
    isTold_ = false;
}

void ProgressBar::Draw()
{
    const Clock::time_point now = Clock::now();
    if (!style_.bar || !isRunning_ || (isDrawn_ && now - drawn_ < kRedrawAfter)) {
        return;
    }
    const std::string bar = " [" + Bar(percent_) + "]" + Tail();
    const std::size_t columns = static_cast<std::size_t>(TerminalWidth(STDERR_FILENO));
    const std::size_t room = columns - std::min(columns, bar.size() + 1);
    std::string text = CancelRequested() ? "Cancelling..." : head_ + text_;
    if (isCancellable_ && !CancelRequested() && text.size() + kControlC.size() <= room) {
        text += kControlC;
    }
    std::fprintf(stderr, "\r%s%s\x1b[K", text.substr(0, room).c_str(), bar.c_str());
    std::fflush(stderr);
    isDrawn_ = true;
    drawn_ = now;
}

void ProgressBar::Clear()
{
    if (isDrawn_) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        isDrawn_ = false;
    }
}

/// What follows the bar. How long work takes that may end early is not known.
std::string ProgressBar::Tail() const
{
    const double elapsed = Elapsed();
    if (isTold_) {
        return " " + TimeText(elapsed);
    }
    char text[16];
    std::snprintf(text, sizeof text, " %3d%% ", percent_);
    std::string tail = text + TimeText(elapsed);
    if (percent_ >= kPercentBeforeEstimate && elapsed >= kSecondsBeforeEstimate) {
        tail += ", " + TimeText(elapsed * (100 - percent_) / percent_) + " left";
    }
    return tail;
}

double ProgressBar::Elapsed() const
{
    return std::chrono::duration<double>(Clock::now() - started_).count();
}

} // namespace corvane::cli
