#include <memory>

#include "cli/colour.h"
#include "cli/session.h"

namespace corvane::cli {

void AddLrgb(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("lrgb", "Give the colours of one image to the luminance of another");
    auto words = std::make_shared<ColourWords>();
    AddColourCommand(command, words, session, catalogue::RunLrgb, {"L", "RGB"}, kLongScaleName);
    command.add_flag("--average", words->options.average,
                     "Take the mean of both instead of lightness and colour in CIE L*a*b*");
    command
        .add_option("--scale", words->options.scale,
                    "Pixels of RGB that go on one of L: 0.5 enlarges an RGB that was binned 2 x 2 [0.01 to 100]")
        ->type_name("N")
        ->capture_default_str();
    command.footer(
        "Both are taken as their display levels show them. A file that has none gets, for this work alone, black just "
        "below the sky of each plane and white at its largest sample. So levels matter: where one file shows faint "
        "parts brighter than the other, colours get paler or stronger. Set them with `corvane apply IN -o OUT "
        "auto-levels` or `levels:min=A,max=B` first. What lies below black is cut off, and so is what is more than "
        "19.6 times as far above it as white; not so with --average. The result has the size, header and levels of L. "
        "Where RGB is not, L is grey; undefined samples become black, but with --average stay undefined. With "
        "--scale and without stars the middle of RGB lies on that of L. " +
        AlignmentFooter());
}

} // namespace corvane::cli
