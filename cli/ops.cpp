#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "cli/all_operations.h"
#include "cli/documents.h"
#include "cli/session.h"
#include "cli/terminal.h"

namespace corvane::cli {
namespace {

using catalogue::Operation;
using catalogue::Parameter;

struct OpsOptions {
    std::string name;
    bool json = false;
    std::string document;
};

constexpr int kNameColumns = 16;

void PrintOperation(const Operation& operation, int width)
{
    std::cout << Wrapped(operation.name, operation.summary, kNameColumns, width);
    for (const Parameter& parameter : ShownParameters(operation)) {
        std::cout << Wrapped("    " + parameter.name, catalogue::DescriptionOf(parameter), kNameColumns + 4, width);
    }
}

void PrintHelp(const Operation& operation, int width)
{
    std::cout << "\n" << Wrapped("", operation.help, 0, width);
    if (operation.IsStep()) {
        std::cout << Wrapped("", "Looks at: " + ToText(UsualFootprint(operation)) + ".", 0, width);
        std::cout << "Takes " << WordFor(operation.inputs.front().planes) << ".";
    } else {
        std::cout << "A command of its own: see `corvane help " << operation.name << "`.";
    }
    for (const std::string& alias : operation.aliases) {
        std::cout << " Also called " << alias << ".";
    }
    std::cout << "\n";
}

void PrintLine(const Operation& operation, int width)
{
    std::cout << Wrapped("  " + operation.name, operation.summary, kNameColumns + 4, width);
}

/// One line for each step, under the titles of the groups.
void PrintAll(int width)
{
    std::string title;
    for (const catalogue::Group& group : AllGroups()) {
        if (group.title != title) {
            std::cout << (title.empty() ? "" : "\n") << group.title << "\n";
            title = group.title;
        }
        for (const Operation& operation : OperationsOf(group)) {
            PrintLine(operation, width);
        }
    }
    std::cout << "\n"
              << Wrapped("",
                         "`corvane ops NAME` explains one; NAME may be any word, as blur. Steps that leave samples in "
                         "their places also take mask=FILE and strength=0..1, how much of the change is taken.",
                         0, width);
}

void PrintOne(const Operation& operation, int width)
{
    PrintOperation(operation, width);
    PrintHelp(operation, width);
}

/// What a name or another word stands for: one operation, or those that may serve. Throws Error for nothing.
std::vector<const Operation*> Meant(const std::string& word)
{
    if (const Operation* named = catalogue::FindNamed(AllOperations(), word)) {
        return {named};
    }
    std::vector<const Operation*> serving = catalogue::OperationsFor(word);
    return serving.empty() ? std::vector{&catalogue::FindOperation(word)} : serving;
}

void PrintMeant(const std::string& word, int width)
{
    const std::vector<const Operation*> meant = Meant(word);
    if (meant.size() == 1) {
        PrintOne(*meant.front(), width);
        return;
    }
    std::cout << "No step is called " << word << "; these may serve:\n";
    for (const Operation* operation : meant) {
        PrintLine(*operation, width);
    }
}

/// One object for a word that stands for one step, else a list.
void PrintJson(const std::string& word)
{
    std::vector<const Operation*> operations;
    if (word.empty()) {
        for (const Operation& operation : AllOperations()) {
            operations.push_back(&operation);
        }
    } else {
        operations = Meant(word);
    }
    std::cout << OperationsJson(operations, word.empty() || operations.size() > 1);
}

std::string Document(const std::string& kind, const CLI::App& app)
{
    return kind == "man" ? ManPage(app) : kind == "bash" ? BashCompletion(app) : OperationsPage();
}

int Ops(const OpsOptions& options, const CLI::App& app)
{
    const int width = TerminalWidth(STDOUT_FILENO);
    if (!options.document.empty()) {
        std::cout << Document(options.document, app);
    } else if (options.json) {
        PrintJson(options.name);
    } else if (options.name.empty()) {
        PrintAll(width);
    } else {
        PrintMeant(options.name, width);
    }
    return kDone;
}

} // namespace

void AddOps(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("ops", "List what `apply` can do");
    auto options = std::make_shared<OpsOptions>();
    AddCommonOptions(command, session);
    CLI::Option* const name =
        command
            .add_option("name", options->name,
                        "The step to explain, or a word for what it should do, as blur; else all are listed")
            ->type_name("NAME");
    CLI::Option* const json = command.add_flag("--json", options->json, "Print JSON");
    command
        .add_option(
            "--as", options->document,
            "Print all as a document: the reference page (markdown), the page for `man`, or what completes words "
            "in bash")
        ->check(CLI::IsMember(std::set<std::string>{"markdown", "man", "bash"}))
        ->type_name("WORD")
        ->excludes(name)
        ->excludes(json);
    command.callback([&, options] { session.work = [&app, options] { return Ops(*options, app); }; });
}

} // namespace corvane::cli
