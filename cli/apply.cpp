#include <algorithm>
#include <string>
#include <vector>

#include "catalogue/step.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/session.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

struct ApplyOptions {
    std::string input;
    std::vector<std::string> steps;
    Output output;
};

std::vector<catalogue::Step> ParseSteps(const std::vector<std::string>& texts)
{
    return {texts.begin(), texts.end()};
}

// Here the catalogue speaks of the image, not of the command line: the file belongs into the message.
void RunStep(const catalogue::Step& step, io::Frame& frame, const std::string& input, const Run& run)
{
    try {
        catalogue::RunStep(step, frame, run);
    } catch (const Error& error) {
        throw OfFile(input, error);
    } catch (const CMemoryException&) {
        throw FileError(input, kMemoryText);
    }
    ThrowIfCancelled();
}

/// The files that steps read, or those that they write.
std::vector<std::string> FilesOfSteps(const std::vector<catalogue::Step>& steps,
                                      std::vector<std::string> (*filesOf)(const catalogue::Arguments&))
{
    std::vector<std::string> all;
    for (const catalogue::Step& step : steps) {
        const std::vector<std::string> files = filesOf(step.arguments);
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

int Apply(const ApplyOptions& options, const Run& run)
{
    if (options.steps.empty()) {
        throw UsageError("no step is given: `corvane ops` lists them (see `corvane help apply`)");
    }
    const std::vector<catalogue::Step> steps = ParseSteps(options.steps);
    io::CheckSave(options.output.path, options.output.save);
    std::vector<std::string> inputs = FilesOfSteps(steps, catalogue::FilesOf);
    inputs.push_back(options.input);
    CheckOutputs(options.output, inputs, FilesOfSteps(steps, catalogue::WrittenFilesOf));
    for (const catalogue::Step& step : steps) {
        catalogue::CheckFiles(step.arguments);
    }
    io::Frame frame = io::Load(options.input);
    ThrowIfCancelled();
    Provisional others;
    for (const catalogue::Step& step : steps) {
        RunStep(step, frame, options.input, run);
        for (const std::string& file : catalogue::WrittenFilesOf(step.arguments)) {
            others.Add(file);
        }
    }
    io::Save(options.output.path, frame.image, frame.header, options.output.save);
    others.Keep();
    return kDone;
}

} // namespace

void AddApply(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("apply", "Work on an image, step by step");
    auto options = std::make_shared<ApplyOptions>();
    AddCommonOptions(command, session);
    AddOutput(command, options->output, "The image to write: .fits, .tif or .png");
    AddSaveOptions(command, options->output.save);
    command.add_option("input", options->input, "The image to read")->required()->type_name("IN");
    command.add_option("steps", options->steps, "What to do: name[:key=value,...], as clip:min=0,max=65535")
        ->type_name("STEP ...");
    command.footer("`corvane ops` lists the steps. A comma within a value is written twice. Each step is noted in the "
                   "result's header.");
    command.callback(
        [&session, options] { session.work = [&session, options] { return Apply(*options, RunOf(session)); }; });
}

} // namespace corvane::cli
