#include <memory>
#include <optional>
#include <string>

#include <CLI/App.hpp>

#include "catalogue/step.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "corvane/core/error.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

struct RenderOptions {
    std::string input;
    Output output;
    PictureWords picture;
    std::string levels; // empty: as the stretch says
};

// The catalogue's step for a value of --levels; empty for the levels that the file comes with, nothing for no value.
std::optional<std::string> LevelsStep(const std::string& levels)
{
    if (levels.empty()) {
        return std::nullopt;
    }
    if (levels == "auto") {
        return "auto-levels";
    }
    if (levels == "file") {
        return "";
    }
    const std::size_t comma = levels.find(',');
    if (comma == std::string::npos) {
        throw UsageError("--levels = " + levels + ": must be auto, file or MIN,MAX");
    }
    return "levels:min=" + levels.substr(0, comma) + ",max=" + levels.substr(comma + 1);
}

int Render(const RenderOptions& options)
{
    const std::optional<std::string> levels = LevelsStep(options.levels);
    if (levels && !levels->empty()) {
        catalogue::ParseStep(*levels);
    }
    io::CheckPicture(options.output.path, options.picture.format);
    CheckOutputs(options.output, FilesAmong({options.input}));
    const io::Frame frame = LoadInput(options.input);
    ThrowIfCancelled();
    SavePicture(options.output.path, frame, options.picture, levels);
    return kDone;
}

} // namespace

void AddRender(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("render", "Write a picture of an image for the screen");
    auto options = std::make_shared<RenderOptions>();
    AddCommonOptions(command, session);
    AddOutput(command, options->output, "The picture to write: .png, .jpg or .tif");
    command.add_option("input", options->input, "The image to read; - is standard input")->required()->type_name("IN");
    CLI::Option* const stretch = AddStretch(command, options->picture);
    command
        .add_option("--levels", options->levels,
                    "What shows black and white, without a stretch: auto (from the sky), file (what the file says, "
                    "else its smallest and largest sample), or two samples")
        ->type_name("auto|file|MIN,MAX")
        ->excludes(stretch);
    AddPictureFormat(command, options->picture);
    command.callback([&session, options] { session.work = [options] { return Render(*options); }; });
}

} // namespace corvane::cli
