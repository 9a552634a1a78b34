#include <cctype>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <unistd.h>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "cli/cancel.h"
#include "cli/documents.h"
#include "cli/memory_size.h"
#include "cli/operation_command.h"
#include "cli/progress_bar.h"
#include "cli/session.h"
#include "cli/settings.h"
#include "cli/startup.h"
#include "cli/terminal.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/core/threads.h"
#include "corvane/platform/memory_exception.h"
#include "stack/options.h"

namespace corvane::cli {
namespace {

int Fail(ExitStatus status, const char* reason, const char* prefix = "") noexcept
{
    std::fprintf(stderr, "corvane: %s%s\n", prefix, reason);
    return status;
}

std::vector<std::string> CommandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(app)) {
        names.push_back(command->get_name());
    }
    return names;
}

// What to say to somebody who wants help on what is no command: it may be a step.
std::string OtherHelp(const CLI::App& app, const std::string& topic)
{
    const bool isStep = catalogue::FindNamed(catalogue::Operations(), topic) != nullptr;
    return isStep ? "; it is a step of `apply`: see `corvane ops " + topic + "`"
                  : catalogue::Suggestion(topic, CommandNames(app)) + " (see `corvane help`)";
}

void PrintHelp(const CLI::App& app, const std::string& topic)
{
    const CLI::App* described = &app;
    if (!topic.empty()) {
        const auto found = app.get_subcommands([&](const CLI::App* command) { return command->get_name() == topic; });
        if (found.empty()) {
            throw UsageError("there is no command '" + topic + "'" + OtherHelp(app, topic));
        }
        described = found.front();
    }
    const std::string name = topic.empty() ? "corvane" : "corvane " + topic;
    std::cout << app.get_formatter()->make_help(described, name, CLI::AppFormatMode::Normal);
}

// Adds `corvane help [COMMAND]`, since people try it.
void AddHelp(CLI::App& app, std::string& topic, Session& session)
{
    CLI::App& help = *app.add_subcommand("help", "Show how to use a command");
    help.add_option("command", topic, "The command to explain")->type_name("COMMAND");
    help.callback([&] {
        session.work = [&] {
            PrintHelp(app, topic);
            return kDone;
        };
    });
}

void AddCommands(CLI::App& app, std::string& topic, Session& session)
{
    app.set_version_flag("--version", "corvane " CORVANE_VERSION, "Show the version and leave");
    app.require_subcommand(1);
    AddCommonOptions(app, session);
    AddInfo(app, session);
    AddStats(app, session);
    AddRender(app, session);
    AddApply(app, session);
    AddDevelop(app, session);
    AddRecipes(app, session);
    AddStack(app, session);
    AddRegister(app, session);
    AddOperation(app, session, "composite");
    AddOperation(app, session, "mosaic");
    AddMatch(app, session);
    for (const char* name : {"rgb", "cmy", "lrgb", "palette", "continuum", "split", "star-mask"}) {
        AddOperation(app, session, name);
    }
    AddStars(app, session);
    AddFindStars(app, session);
    AddPsf(app, session);
    AddOps(app, session);
    AddHelp(app, topic, session);
    app.footer("Exit status: 0 done, 1 failed, 2 the command line is wrong, 130 cancelled.");
}

std::vector<std::string> OptionNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

// What is wrong with the command line. The parser would rather tell what is missing than what is misspelt.
std::string Mistake(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> unknown = app.remaining(true);
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    for (const std::string& word : unknown) {
        if (word.starts_with('-') && word != "--") {
            const std::vector<std::string> names = OptionNames(chosen.empty() ? app : *chosen.front());
            return "unknown option '" + word + "'" + catalogue::Suggestion(word, names);
        }
    }
    if (!chosen.empty()) {
        return error.what();
    }
    return unknown.empty() ? "a command is needed"
                           : "unknown command '" + unknown.front() + "'" +
                                 catalogue::Suggestion(unknown.front(), CommandNames(app));
}

// " stack", or nothing while no command is known.
std::string ChosenCommand(const CLI::App& app)
{
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? std::string() : " " + chosen.front()->get_name();
}

// Returns the exit status when there is nothing more to do.
std::optional<int> Parse(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return kDone;
    } catch (const CLI::CallForVersion& version) {
        std::cout << version.what() << "\n";
        return kDone;
    } catch (const CLI::ParseError& error) {
        throw UsageError(Mistake(app, error) + " (see `corvane help" + ChosenCommand(app) + "`)");
    }
    return std::nullopt;
}

int Work(Session& session)
{
    CheckMemoryVariable();
    ReadSettings();
    SetThreads(session.threads);
    ProgressBar bar({.bar = IsTerminal(STDERR_FILENO) && !session.quiet, .stages = session.verbose});
    session.bar = &bar;
    return session.work();
}

// What was printed may not have arrived: a disk can be full.
void FinishOutput()
{
    if (!std::cout.flush() || std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error("standard output: cannot be written");
    }
}

int Dispatch(int argc, char** argv)
{
    CLI::App app("Image processing for astronomical frames", "corvane");
    Session session;
    std::string topic;
    AddCommands(app, topic, session);
    const std::optional<int> parsed = Parse(app, argc, argv);
    const int status = parsed ? *parsed : Work(session);
    FinishOutput();
    return status;
}

int Main(int argc, char** argv) noexcept
{
    try {
        return Dispatch(argc, argv);
    } catch (const UsageError& error) {
        return Fail(kWrongUsage, error.what());
    } catch (const Error& error) {
        const bool isAsked = error.Is(Error::Kind::kParameter) || error.Is(Error::Kind::kName);
        return Fail(isAsked ? kWrongUsage : kFailed, error.what(), IsOfOption(error) ? "--" : "");
    } catch (const Cancelled& cancelled) {
        return Fail(kCancelled, cancelled.what());
    } catch (const CMemoryException&) {
        return Fail(kFailed, kMemoryText);
    } catch (const std::exception& error) {
        return Fail(kFailed, error.what());
    }
}

} // namespace
} // namespace corvane::cli

int main(int argc, char** argv)
{
    corvane::cli::EndStartup();
    corvane::cli::WatchForCancel();
    return corvane::cli::Main(argc, argv);
}
