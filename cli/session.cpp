#include "cli/session.h"

namespace corvane::cli {

void AddCommonOptions(CLI::App& command, Session& session)
{
    command.add_flag("-v,--verbose", session.verbose, "Say more: a line for every stage of the work");
    command.add_flag("-q,--quiet", session.quiet, "Say nothing but errors and what was asked for");
}

} // namespace corvane::cli
