#include "catalogue/composite.h"

#include <memory>
#include <string>
#include <variant>

#include "catalogue/names.h"
#include "catalogue/parameter.h"
#include "cli/pair.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

struct CompositeWords {
    PairFiles files;
    std::string align;
    catalogue::CompositeOptions composite;
};

int Composite(const CompositeWords& words, const Session& session)
{
    CheckAlign(words.align, words.composite.placement);
    catalogue::CheckComposite(words.composite);
    return JoinPair(words.files, session, [&](io::Frame& base, io::Frame& overlay) {
        return catalogue::RunComposite(base, overlay, words.composite, ContextOf(session));
    });
}

void AddWayOptions(CLI::App& command, catalogue::CompositeOptions& options)
{
    command
        .add_option("--mode", options.mode,
                    "How values are combined: " + catalogue::Joined(catalogue::CompositeModes()))
        ->required()
        ->type_name("MODE");
    command
        .add_option("--ratio", options.ratio,
                    "blend: weight of OVERLAY, 0 to 1, else 0.5; desaturate: exposure of BASE over that of OVERLAY")
        ->type_name("N");
    command.add_flag("--display", options.display,
                     "Combine what the display levels show, 0 to 255, instead of the samples as they are");
    command.add_flag("--clamp", options.clamp, "difference of colour images: negative ones become 0");
    command
        .add_option("--fraction", options.fraction, "desaturate: from which part of the maximum a sample is saturated")
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--radius", options.radius,
                    "desaturate: look for saturation as far around a pixel [pixels, 0 to 2]")
        ->type_name("N")
        ->capture_default_str();
    const auto readRectangle = [&options](const std::string& text) {
        catalogue::Parameter rect = catalogue::RectangleParameter();
        rect.name = "--rect";
        options.rect = std::get<CRect>(catalogue::ParseValue(rect, text));
    };
    command.add_option_function<std::string>("--rect", readRectangle, "Work inside this rectangle of BASE only")
        ->type_name("LEFT:TOP:RIGHT:BOTTOM");
}

} // namespace

void AddComposite(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("composite", "Combine two images, pixel by pixel");
    auto words = std::make_shared<CompositeWords>();
    AddCommonOptions(command, session);
    AddPairFiles(command, words->files, "BASE", "OVERLAY");
    AddWayOptions(command, words->composite);
    AddPlacement(command, words->composite.placement, words->align, catalogue::kOverlayPoints);
    command.footer(
        "The result has the size, planes and header of BASE. OVERLAY may have any size; of a colour one a monochrome "
        "BASE gets the brightness. Without stars the turn is about the middle of OVERLAY, with stars about the first. "
        "Pixels beyond OVERLAY become undefined. Two stars give the turn as exactly as their centres are measured.");
    command.callback([&session, words] { session.work = [&session, words] { return Composite(*words, session); }; });
}

} // namespace corvane::cli
