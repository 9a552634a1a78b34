#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "corvane/core/diagnostic.h"
#include "corvane/platform/export.h"

class CStlImage;

namespace corvane {

/// How far a stage of the work is.
struct Progress {
    enum class State {
        kBegun,   ///< the stage begins; `text` names it
        kCounted, ///< `steps` more of `total` are done, `done` in all
        kReached, ///< `done` percent are done, of a stage that does not count
        kMessage, ///< `text` says what goes on; the stage stays what it is
        kEnded,   ///< the stage is over, however it ended
    };

    static constexpr int kPercent = -1; ///< the total of a stage that tells percentages instead of counting

    State state = State::kBegun;
    const char* text = ""; ///< good during the call
    int steps = 0;
    int done = 0;
    int total = 0;
};

/// The work was stopped because its run asked for it; nothing was made.
class CORVANE_API Cancelled : public std::exception {
public:
    const char* what() const noexcept override;
};

/// Everything that long work is given besides its input: whom it tells how far it is, whom it asks whether to go on,
/// how many threads it may use, and who hears what it finds. Handed down to whatever takes long; what is left empty
/// is silent, and such work always runs to its end. It must outlive the work; all of it is called on the caller's
/// thread.
struct Run {
    std::function<void(const Progress&)> progress{};
    std::function<bool()> cancelled{};                    ///< asked at every step: true ends the work
    int threads = 0;                                      ///< at most so many; 0: as `corvane::Threads` says
    std::function<void(const Diagnostic&)> diagnostics{}; ///< findings as data

    /// How many threads the work may use.
    CORVANE_VISIBLE int Threads() const;
    /// True when the work is to stop.
    bool IsCancelled() const { return cancelled && cancelled(); }
    void ThrowIfCancelled() const
    {
        if (IsCancelled()) {
            throw Cancelled();
        }
    }
    void Tell(const Diagnostic& diagnostic) const
    {
        if (diagnostics) {
            diagnostics(diagnostic);
        }
    }
    /// Tells a `Note`, or a `Finding`.
    void TellNote(std::string text) const { Tell(Note{std::move(text)}); }
    void TellFinding(std::string text) const { Tell(Finding{std::move(text)}); }
};

/// Whether the ESC key ends the work of a member of the interface.
enum class EscapeKey { kIgnored, kEnds };

/// The run of a member of the interface: its progress goes to the image's progress window by the image's channel, and
/// with `EscapeKey::kEnds` the ESC key in the thread's message queue cancels it. With show 0 nothing is sent or asked.
/// The image must outlive the run.
CORVANE_VISIBLE Run WindowRun(CStlImage& image, int show, EscapeKey escape = EscapeKey::kIgnored);

/// A stage of a run's work: begins it, counts its steps, and ends it however the work ends, with an exception too.
/// What the run's listener throws goes on to the caller, but for what it throws at the end.
class CORVANE_VISIBLE Stage {
public:
    /// A stage of `total` steps, none where that is below 0. The text is good as long as the call.
    Stage(const Run& run, const char* text, int total);
    Stage(const Run& run, int textId, int total);           ///< The same with the text of a string table id.
    Stage(Run&& run, const char* text, int total) = delete; ///< the run must outlive the stage
    Stage(Run&& run, int textId, int total) = delete;
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Counts steps; throws Cancelled when the run asks to stop.
    void Step(int steps = 1)
    {
        if (!Advance(steps)) {
            throw Cancelled();
        }
    }
    /// Counts steps; false when the run asks to stop.
    bool Advance(int steps = 1);
    int Threads() const { return run_.Threads(); } ///< How many threads the work may use.

private:
    const Run& run_;
    int done_ = 0;
    int total_;
};

} // namespace corvane
