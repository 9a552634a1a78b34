#include <memory>

#include "cli/colour.h"
#include "cli/session.h"

namespace corvane::cli {

void AddRgb(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("rgb", "Make a colour image of frames for red, green and blue");
    auto words = std::make_shared<ColourWords>();
    AddColourCommand(command, words, session, catalogue::RunRgb, {"R", "G", "B"});
    AddOutside(command, *words);
    command.footer("Samples keep their values. The result has the size and header of R, each plane the display levels "
                   "of its frame. A colour frame gives its plane of that colour. What is undefined in a frame stays "
                   "so. " +
                   AlignmentFooter());
}

} // namespace corvane::cli
