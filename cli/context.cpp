#include <cmath>
#include <cstdio>
#include <string>

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

} // namespace

catalogue::Context ContextOf(const Session& session)
{
    ProgressBar& bar = *session.bar;
    catalogue::Context context;
    context.restoring = [&bar, isVerbose = session.verbose](const RestoreEvent& event) {
        const RestoreState& state = StateOf(event);
        if (isVerbose) {
            bar.Print(ReportOf(event));
        }
        bar.Show(Words(state), static_cast<int>(100.0 * state.iteration / state.limit));
    };
    if (session.verbose) {
        context.tell = [&bar](const std::string& line) { bar.Print(line + "\n"); };
    }
    if (!session.quiet) {
        context.note = [&bar](const std::string& text) { bar.Print("note: " + text + "\n"); };
    }
    return context;
}

} // namespace corvane::cli
