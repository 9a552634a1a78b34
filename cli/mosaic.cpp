#include "catalogue/mosaic.h"

#include <memory>
#include <string>

#include "catalogue/names.h"
#include "cli/pair.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

struct MosaicWords {
    PairFiles files;
    std::string align;
    catalogue::MosaicOptions mosaic;
};

int Mosaic(const MosaicWords& words, const Session& session)
{
    CheckAlign(words.align, words.mosaic.placement);
    catalogue::CheckMosaic(words.mosaic);
    return JoinPair(words.files, session, [&](io::Frame& first, io::Frame& second) {
        return catalogue::RunMosaic(first, second, words.mosaic, ContextOf(session));
    });
}

void AddWayOptions(CLI::App& command, catalogue::MosaicOptions& options)
{
    command
        .add_option("--mode", options.mode, "What shows where both are: " + catalogue::Joined(catalogue::MosaicModes()))
        ->type_name("MODE")
        ->capture_default_str();
    AddNumbers(command, "--key", options.key, "mode key: the sample of SECOND that lets FIRST through")
        ->type_name("N|R,G,B");
    command.add_flag("--average", options.average,
                     "Make every pixel the mean of both; where one image is missing, of the other and the background");
    command.add_flag("--display", options.display,
                     "Join what the display levels show, 0 to 255, instead of the samples as they are");
    command
        .add_option("--background", options.background,
                    "With --display: what shows where no image is, 0 to 255; else 0")
        ->type_name("N");
}

} // namespace

void AddMosaic(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("mosaic", "Join two images on a canvas that holds both");
    auto words = std::make_shared<MosaicWords>();
    AddCommonOptions(command, session);
    AddPairFiles(command, words->files, "FIRST", "SECOND");
    AddWayOptions(command, words->mosaic);
    AddPlacement(command, words->mosaic.placement, words->align, catalogue::kSecondPoints);
    command.footer(
        "The result has the planes and header of FIRST; its world coordinates move along. over and under put SECOND on "
        "or below FIRST. Without stars the turn is about the middle of SECOND, with stars about the first. Two stars "
        "give the turn as exactly as their centres are measured.");
    command.callback([&session, words] { session.work = [&session, words] { return Mosaic(*words, session); }; });
}

} // namespace corvane::cli
