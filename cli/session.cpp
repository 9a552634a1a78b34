#include "cli/session.h"

namespace corvane::cli {

void AddCommonOptions(CLI::App& command, Session& session)
{
    command.add_flag("-v,--verbose", session.verbose, "Print a line for every stage of the work");
    command.add_flag("-q,--quiet", session.quiet, "Print errors and results only");
}

} // namespace corvane::cli
