#include <memory>
#include <optional>
#include <set>
#include <string>

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

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
    CheckOutputs(options.output, {options.input});
    const io::Frame frame = io::Load(options.input);
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
    command.add_option("input", options->input, "The image to read")->required()->type_name("IN");
    CLI::Option* const stretch = AddStretch(command, options->picture);
    command
        .add_option("--levels", options->levels,
                    "What shows black and white, without a stretch: auto (from the sky), file (what the file says, "
                    "else its smallest and largest sample), or two samples")
        ->type_name("auto|file|MIN,MAX")
        ->excludes(stretch);
    command.add_option("--size", options->picture.size, "Make a picture whose longer side has at most so many pixels")
        ->check(CLI::Range(1, 100000))
        ->type_name("N");
    command.add_option("--quality", options->picture.format.quality, "Quality of a JPEG")
        ->check(CLI::Range(1, 100))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--bits", options->picture.format.bits, "Bits per sample: 8 or 16; else 16 for TIFF, 8 for others")
        ->check(CLI::IsMember(std::set<int>{8, 16}))
        ->type_name("N");
    command.callback([&session, options] { session.work = [options] { return Render(*options); }; });
}

} // namespace corvane::cli
