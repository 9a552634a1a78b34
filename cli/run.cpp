#include "corvane/core/run.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <variant>

#include "cli/cancel.h"
#include "cli/progress_bar.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

std::string Words(const RestoreState& state)
{
    std::string text = state.plane == 0 ? "Iteration " : "Plane " + std::to_string(state.plane) + ", iteration ";
    text += std::to_string(state.iteration) + " of " + std::to_string(state.limit);
    if (!std::isnan(state.chiSquare)) {
        char number[40];
        std::snprintf(number, sizeof number, ", chi-square %.4g", state.chiSquare);
        text += number;
    }
    return text;
}

/// Puts what work tells of itself on the bar and above it.
struct Teller {
    ProgressBar& bar;
    bool isVerbose;
    bool isQuiet;

    void operator()(const RestoreEvent& event) const
    {
        if (isVerbose) {
            bar.Print(ReportOf(event));
        }
        const RestoreState& state = StateOf(event);
        bar.Show(Words(state), static_cast<int>(100.0 * state.iteration / state.limit));
    }
    void operator()(const Note& note) const
    {
        if (!isQuiet) {
            bar.Print("note: " + note.text + "\n");
        }
    }
    void operator()(const Finding& finding) const
    {
        if (isVerbose) {
            bar.Print(finding.text + "\n");
        }
    }
};

} // namespace

Run RunOf(const Session& session)
{
    ProgressBar& bar = *session.bar;
    Run run;
    run.progress = [&bar](const Progress& progress) { bar.Follow(progress); };
    run.cancelled = CancelRequested;
    run.diagnostics = [teller = Teller{bar, session.verbose, session.quiet}](const Diagnostic& diagnostic) {
        std::visit(teller, diagnostic);
    };
    return run;
}

} // namespace corvane::cli
