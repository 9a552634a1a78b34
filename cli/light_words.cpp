#include "cli/light_words.h"

#include <filesystem>
#include <system_error>

#include "cli/memory_size.h"
#include "cli/operation_command.h"
#include "cli/report.h"
#include "cli/session.h"
#include "corvane/core/error.h"
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
    command
        .add_option("--masters", words.masters,
                    "Keep what calibration frames are combined to in this folder, and take it up again while they have "
                    "not changed")
        ->type_name("FOLDER");
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

stack::SortedNight SortedFrames(const stack::Options& options, const std::vector<std::string>& outputs, const Run& run)
{
    std::vector<std::string> skip = outputs;
    skip.push_back(options.mastersFolder);
    stack::SortedNight night = stack::SortFrames(options, skip, run);
    for (const std::string& warning : night.warnings) {
        run.TellNote(warning);
    }
    return night;
}

void TakeMemory(const LightWords& words)
{
    if (!words.memory.empty()) {
        SetMemoryBudget(ReadMemorySize("--memory", words.memory));
    }
}

stack::Options OptionsOf(const LightWords& words)
{
    if (words.files.find("light")->second.empty()) {
        throw UsageError(words.operation->name +
                         ": there are no lights; put them first, or after `--`, since all files that follow --bias, "
                         "--dark, --flat and --flat-dark belong to that option");
    }
    TakeMemory(words);
    stack::Options options = stack::OptionsOf(words.files, catalogue::MakeArguments(*words.operation, words.settings));
    options.mastersFolder = words.masters;
    if (std::error_code ignored;
        std::filesystem::exists(words.masters, ignored) && !std::filesystem::is_directory(words.masters, ignored)) {
        throw NameError(words.masters, "is no folder");
    }
    options.wantsReport = !words.report.empty();
    if (options.wantsReport) {
        CheckReport(words.report);
    }
    return options;
}

} // namespace corvane::cli
