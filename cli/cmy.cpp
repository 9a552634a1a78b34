#include <memory>

#include "cli/colour.h"
#include "cli/session.h"

namespace corvane::cli {

void AddCmy(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("cmy", "Make a colour image of frames for cyan, magenta and yellow");
    auto words = std::make_shared<ColourWords>();
    AddColourCommand(command, words, session, catalogue::RunCmy, {"C", "M", "Y"});
    AddOutside(command, *words);
    command.footer("Red becomes Y + M - C, green C + Y - M, blue C + M - Y. The result has the size and header of C, "
                   "and display levels between those of the frames. What is undefined in a frame stays so. " +
                   AlignmentFooter());
}

} // namespace corvane::cli
