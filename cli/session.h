#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include <CLI/App.hpp>

#include "corvane/core/error.h"
#include "corvane/core/run.h"

namespace corvane::cli {

class ProgressBar;

/// Exit statuses of the command.
enum ExitStatus : int {
    kDone = 0,
    kFailed = 1,
    kWrongUsage = 2,
    kCancelled = 130,
};

/// The command line asks for something that makes no sense.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Session {
    bool verbose = false;
    bool quiet = false;
    int threads = 0;            ///< to work with; 0 for the library's choice
    std::function<int()> work;  ///< the chosen command; returns the exit status
    ProgressBar* bar = nullptr; ///< there while it works
};

/// The run of this session's work: the bar shows how far it is and how far a restoration is, notes appear above the bar
/// unless the session is `--quiet`, what else the work tells of itself with `--verbose`, and Ctrl-C cancels it.
Run RunOf(const Session& session);

/// True of an error about an option of the chosen command, which is what a parameter without an operation is. LIGHT and
/// the like are none.
bool IsOfOption(const Error& error) noexcept;

/// An error of work on a file, with the file's name before it unless it names one; options as they are written.
Error OfFile(const std::string& file, const Error& error);

/// Adds `--verbose`, `--quiet` and `--threads`, which every command takes.
void AddCommonOptions(CLI::App& command, Session& session);

/// @name The commands: each adds itself to the application and, when chosen, sets the session's work
/// @{
void AddInfo(CLI::App& app, Session& session);
void AddStats(CLI::App& app, Session& session);
void AddRender(CLI::App& app, Session& session);
void AddApply(CLI::App& app, Session& session);
void AddDevelop(CLI::App& app, Session& session);
void AddRecipes(CLI::App& app, Session& session);
void AddStack(CLI::App& app, Session& session);
void AddRegister(CLI::App& app, Session& session);
void AddMatch(CLI::App& app, Session& session);
void AddStars(CLI::App& app, Session& session);
void AddFindStars(CLI::App& app, Session& session);
void AddPsf(CLI::App& app, Session& session);
void AddOps(CLI::App& app, Session& session);
/// @}

} // namespace corvane::cli
