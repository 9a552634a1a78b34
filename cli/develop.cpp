#include <memory>
#include <string>
#include <vector>

#include "catalogue/recipe.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/recipe_words.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "corvane/core/error.h"

namespace corvane::cli {
namespace {

struct DevelopOptions {
    std::string input;
    std::string recipe = catalogue::kUsualRecipe;
    Output output;
    PictureWords picture;

    bool MakesFits() const { return output.path == kStandardStream || io::HoldsExtensions(output.path); }
    /// Integers of a developed frame hold what lies between black and white.
    io::SaveOptions Save() const
    {
        const int bits = picture.format.bits;
        return {bits, bits == 0 ? io::SampleScale::kCounts : io::SampleScale::kLevels};
    }
};

void CheckDevelop(const DevelopOptions& options, const catalogue::Recipe& recipe)
{
    std::vector<std::string> inputs = FilesOfSteps(recipe, catalogue::FilesOf);
    for (const std::string& input : FilesAmong({options.input})) {
        inputs.push_back(input);
    }
    CheckOutputs(options.output, inputs, FilesOfSteps(recipe, catalogue::WrittenFilesOf));
    for (const catalogue::Step& step : recipe) {
        catalogue::CheckFiles(step.arguments);
    }
    if (!options.MakesFits()) {
        io::CheckPicture(options.output.path, options.picture.format);
    } else if (options.picture.size > 0) {
        throw ParameterError("size", std::to_string(options.picture.size), "is for pictures; FITS keeps all pixels");
    } else {
        CheckOutput(options.output.path, options.Save());
    }
}

int Develop(const DevelopOptions& options, const Run& run)
{
    const catalogue::Recipe recipe = catalogue::FindRecipe(options.recipe);
    CheckDevelop(options, recipe);
    io::Frame frame = LoadInput(options.input);
    ThrowIfCancelled();
    Provisional others;
    RunOnFile(options.input, recipe, catalogue::RunIfItFits, frame, others, run);
    if (options.MakesFits()) {
        SaveOutput(options.output.path, frame, options.Save());
    } else {
        SavePicture(options.output.path, frame, options.picture);
    }
    others.Keep();
    return kDone;
}

} // namespace

void AddDevelop(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("develop", "Make a picture of a stack by a recipe");
    auto options = std::make_shared<DevelopOptions>();
    AddCommonOptions(command, session);
    AddOutput(command, options->output,
              "The picture to write: .png, .jpg, .tif or .fits; - is FITS to standard output");
    command.add_option("input", options->input, "The stack to read; - is standard input")->required()->type_name("IN");
    AddRecipe(command, options->recipe,
              "What is done: a shipped recipe (see `corvane recipes`) or a file with a step a line")
        ->capture_default_str();
    AddPictureFormat(command, options->picture);
    command.footer("A step of the recipe that the stack does not fit, as one for colours, is left out with a note.");
    command.callback(
        [&session, options] { session.work = [&session, options] { return Develop(*options, RunOf(session)); }; });
}

} // namespace corvane::cli
