#include <memory>
#include <string>

#include "catalogue/step.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/session.h"
#include "corvane/core/error.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

struct RenderOptions {
    std::string input;
    Output output;
    std::string levels = "auto";
};

// The catalogue's step for a value of --levels; empty for the levels that the file comes with.
std::string LevelsStep(const std::string& levels)
{
    if (levels == "auto") {
        return "auto-levels";
    }
    if (levels == "file") {
        return {};
    }
    const std::size_t comma = levels.find(',');
    if (comma == std::string::npos) {
        throw UsageError("--levels = " + levels + ": must be auto, file or MIN,MAX");
    }
    return "levels:min=" + levels.substr(0, comma) + ",max=" + levels.substr(comma + 1);
}

int Render(const RenderOptions& options)
{
    const std::string levels = LevelsStep(options.levels);
    if (!levels.empty()) {
        catalogue::ParseStep(levels);
    }
    CheckPicture(options.output.path);
    CheckOutputs(options.output, {options.input});
    io::Frame frame = io::Load(options.input);
    ThrowIfCancelled();
    SavePicture(options.output.path, frame, levels);
    return kDone;
}

} // namespace

void AddRender(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("render", "Write a picture of an image for the screen");
    auto options = std::make_shared<RenderOptions>();
    AddCommonOptions(command, session);
    AddOutput(command, options->output, "The picture to write: .png");
    command.add_option("input", options->input, "The image to read")->required()->type_name("IN");
    command
        .add_option("--levels", options->levels,
                    "What shows black and white: auto (from the sky), file (what the file says, else its smallest and "
                    "largest sample), or two samples")
        ->type_name("auto|file|MIN,MAX")
        ->capture_default_str();
    command.callback([&session, options] { session.work = [options] { return Render(*options); }; });
}

} // namespace corvane::cli
