#pragma once

#include <chrono>
#include <string>

#include "corvane/core/run.h"

namespace corvane::cli {

/// How much the progress of work shows.
struct ProgressStyle {
    bool bar = false;    ///< a bar that is drawn again and again, for terminals
    bool stages = false; ///< one line for every stage, when it is done
};

/// How far work is, drawn on standard error.
class ProgressBar {
public:
    explicit ProgressBar(ProgressStyle style) : style_(style) {}
    ~ProgressBar() { Clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows what a run tells of its progress.
    void Follow(const Progress& progress);
    /// Shows how far work is that tells so itself, in per cent, and may be done before 100. What it follows counts no
    /// more until that work ends.
    void Show(const std::string& text, int percent);
    /// From now on work is on one of several files: its number stands before what is shown.
    void CountFile(std::size_t number, std::size_t count);
    /// Writes lines above the bar. One that is not yet whole waits for its rest.
    void Print(const std::string& text);

private:
    using Clock = std::chrono::steady_clock;

    void Start(const char* text);
    void Step(int percent);
    void End();
    void Draw();
    void Clear();
    std::string Tail() const;
    double Elapsed() const;

    ProgressStyle style_;
    std::string head_; ///< which file it is, of several
    std::string text_;
    std::string unfinished_; ///< line
    int percent_ = 0;
    bool isRunning_ = false;
    bool isCancellable_ = false; ///< the work says so
    bool isTold_ = false;        ///< by Show
    bool isDrawn_ = false;
    Clock::time_point started_{};
    Clock::time_point drawn_{};
};

} // namespace corvane::cli
