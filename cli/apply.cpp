#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "catalogue/recipe.h"
#include "cli/apply_words.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "cli/recipe_words.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "corvane/core/error.h"
#include "io/output_file.h"

namespace corvane::cli {
namespace {

struct ApplyOptions {
    std::string input;
    std::vector<std::string> words; // further inputs, then steps
    std::string recipe;
    std::string savedRecipe;
    Output output;
};

/// What is to be done, read and written.
struct Job {
    catalogue::Recipe recipe;           ///< whose steps may be left out
    std::vector<catalogue::Step> steps; ///< done after it
    std::vector<std::string> inputs;
    std::vector<std::string> outputs; ///< one for each input

    catalogue::Recipe All() const
    {
        catalogue::Recipe all = recipe;
        all.insert(all.end(), steps.begin(), steps.end());
        return all;
    }
};

Job JobOf(const ApplyOptions& options)
{
    const ApplyWords words = ToldApart(options.input, options.words);
    if (words.steps.empty() && options.recipe.empty()) {
        throw UsageError("no step is given: `corvane ops` lists them, `corvane recipes` recipes (see `corvane help "
                         "apply`)");
    }
    Job job;
    if (!options.recipe.empty()) {
        job.recipe = catalogue::FindRecipe(options.recipe);
    }
    job.steps = {words.steps.begin(), words.steps.end()};
    job.inputs = words.inputs;
    job.outputs = OutputsFor(job.inputs, options.output.path);
    return job;
}

/// An image may replace the one that it is made of, no other.
void CheckImages(const Job& job, bool overwrite, const FileSet& read)
{
    for (std::size_t i = 0; i < job.outputs.size(); ++i) {
        const std::string& output = job.outputs[i];
        const bool isOwn = overwrite && InputFiles({job.inputs[i]}).Has(output);
        if (output != kStandardStream && read.Has(output) && !isOwn) {
            throw NameError(output, "is both input and output; --overwrite replaces it by what is made of it");
        }
    }
}

/// What is written besides the images: by steps, and the recipe.
void CheckOtherFiles(const Job& job, const std::string& savedRecipe, const FileSet& read)
{
    std::vector<std::string> others = FilesOfSteps(job.All(), catalogue::WrittenFilesOf);
    if (!others.empty() && job.inputs.size() > 1) {
        throw NameError(others.front(), "would be written for each of several images");
    }
    others.push_back(savedRecipe);
    FileSet written;
    for (const std::string& output : FilesAmong(job.outputs)) {
        written.Add(output);
    }
    CheckOthers(others, read, written);
}

/// Makes the folder that images go to, unless it is there. Where it cannot be made, the check of the images says so.
void MakeFolder(const std::string& output, Provisional& made)
{
    std::error_code ignored;
    if (output.ends_with('/') && std::filesystem::create_directory(output, ignored)) {
        made.Add(output);
    }
}

void CheckJob(const Job& job, const ApplyOptions& options)
{
    std::vector<std::string> inputs = FilesOfSteps(job.All(), catalogue::FilesOf);
    for (const std::string& input : FilesAmong(job.inputs)) {
        inputs.push_back(input);
    }
    FileSet read = InputFiles(inputs);
    read.Add(options.recipe);
    CheckImages(job, options.output.overwrite, read);
    CheckOtherFiles(job, options.savedRecipe, read);
    catalogue::RecipeText(job.All());
    for (const catalogue::Step& step : job.All()) {
        catalogue::CheckFiles(step.arguments);
    }
    Provisional folder;
    MakeFolder(options.output.path, folder);
    for (const std::string& output : job.outputs) {
        CheckOutput(output, options.output.save);
    }
    if (!options.savedRecipe.empty()) {
        io::OutputFile::Check(options.savedRecipe);
    }
    folder.Keep();
}

void ApplyTo(const std::string& input, const std::string& output, const Job& job, const io::SaveOptions& save,
             const Run& run)
{
    io::Frame frame = LoadInput(input);
    ThrowIfCancelled();
    Provisional others;
    RunOnFile(input, job.recipe, catalogue::RunIfItFits, frame, others, run);
    RunOnFile(input, job.steps, catalogue::RunStep, frame, others, run);
    SaveOutput(output, frame, save);
    others.Keep();
}

/// Returns how many images failed; of several, one does not keep the others from being made.
std::size_t ApplyToAll(const Job& job, const io::SaveOptions& save, const Session& session)
{
    const std::size_t count = job.inputs.size();
    std::size_t failed = 0;
    for (std::size_t i = 0; i < count; ++i) {
        try {
            if (count > 1) {
                session.bar->CountFile(i + 1, count);
            }
            ApplyTo(job.inputs[i], job.outputs[i], job, save, RunOf(session));
        } catch (const Error& error) {
            if (count == 1) {
                throw;
            }
            session.bar->Print(std::string("corvane: ") + error.what() + "\n");
            ++failed;
        }
    }
    return failed;
}

void SaveRecipe(const std::string& path, const catalogue::Recipe& recipe)
{
    const std::string text = catalogue::RecipeText(recipe);
    io::OutputFile file(path);
    file.Write(text.data(), text.size());
    file.Commit();
}

int Apply(const ApplyOptions& options, const Session& session)
{
    const Job job = JobOf(options);
    CheckJob(job, options);
    const std::size_t failed = ApplyToAll(job, options.output.save, session);
    if (!options.savedRecipe.empty()) {
        SaveRecipe(options.savedRecipe, job.All());
    }
    if (failed > 0) {
        throw std::runtime_error(std::to_string(failed) + " of " + std::to_string(job.inputs.size()) +
                                 " images failed");
    }
    return kDone;
}

} // namespace

void AddApply(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("apply", "Work on images, step by step");
    auto options = std::make_shared<ApplyOptions>();
    AddCommonOptions(command, session);
    AddOutput(command, options->output,
              "The image to write: .fits, .tif or .png; for several a folder, or a name with {name}, as "
              "'{name}_new.fits'; - is FITS to standard output");
    AddSaveOptions(command, options->output.save);
    AddRecipe(command, options->recipe,
              "Do the steps of a recipe first: a shipped one (see `corvane recipes`) or a "
              "file with a step a line");
    command.add_option("--save-recipe", options->savedRecipe, "Write the steps of this call as a recipe, too")
        ->type_name("FILE");
    command.add_option("input", options->input, "The image to read; - is standard input")->required()->type_name("IN");
    command
        .add_option("words", options->words,
                    "More images to read, then what to do: name[:key=value,...], as clip:min=0,max=65535")
        ->type_name("IN|STEP");
    command.footer("`corvane ops` lists the steps. A comma within a value is written twice. Each step is noted in the "
                   "result's header. When one of several images fails, the others are made, and the exit status is 1.");
    command.callback([&session, options] { session.work = [&session, options] { return Apply(*options, session); }; });
}

} // namespace corvane::cli
