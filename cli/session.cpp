#include "cli/session.h"

#include <cctype>

namespace corvane::cli {

void AddCommonOptions(CLI::App& command, Session& session)
{
    command.add_flag("-v,--verbose", session.verbose, "Print a line for every stage of the work");
    command.add_flag("-q,--quiet", session.quiet, "Print errors and results only");
}

bool IsOfOption(const Error& error) noexcept
{
    return error.Is(Error::Kind::kParameter) && error.Operation().empty() && !error.Subject().empty() &&
           std::islower(static_cast<unsigned char>(error.Subject().front())) != 0;
}

Error OfFile(const std::string& file, const Error& error)
{
    const bool isOwn = error.Is(Error::Kind::kFile) || error.Is(Error::Kind::kName);
    return isOwn ? error : FileError(file, (IsOfOption(error) ? "--" : "") + std::string(error.what()));
}

} // namespace corvane::cli
