#include "cli/light_words.h"

#include "cli/memory_size.h"
#include "cli/operation_command.h"
#include "cli/report.h"
#include "cli/session.h"
#include "corvane/core/memory_budget.h"
#include "stack/operation.h"

namespace corvane::cli {

void AddLightOptions(CLI::App& command, const catalogue::Operation& operation, LightWords& words)
{
    words.operation = &operation;
    AddInputs(command, operation, words.files);
    AddParameters(command, operation, words.settings);
    command.add_option("--report", words.report, "Write what became of each light, too")
        ->type_name("FILE.json|.csv|.html");
    command.add_option("--memory", words.memory, "Memory for samples, as 512M or 2G; else half of the computer's")
        ->type_name("SIZE");
    command.footer(
        command.get_footer() +
        " The calibration options take all files up to the next option: put the lights first, or after `--`.");
}

std::vector<std::string> InputsOf(const LightWords& words)
{
    return FilesOf(words.files, *words.operation);
}

stack::Options OptionsOf(const LightWords& words)
{
    if (words.files.find("light")->second.empty()) {
        throw UsageError(words.operation->name +
                         ": there are no lights; put them first, or after `--`, since all files that follow --bias, "
                         "--dark, --flat and --flat-dark belong to that option");
    }
    if (!words.memory.empty()) {
        SetMemoryBudget(ReadMemorySize("--memory", words.memory));
    }
    stack::Options options = stack::OptionsOf(words.files, catalogue::MakeArguments(*words.operation, words.settings));
    if (!words.report.empty()) {
        CheckReport(words.report);
    }
    return options;
}

} // namespace corvane::cli
