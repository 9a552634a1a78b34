#include "cli/session.h"

#include <cctype>

#include <CLI/Validators.hpp>

namespace corvane::cli {

void AddCommonOptions(CLI::App& command, Session& session)
{
    command.add_flag("-v,--verbose", session.verbose, "Print a line for every stage of the work");
    command.add_flag("-q,--quiet", session.quiet, "Print errors and results only");
    command.add_option("--threads", session.threads, "Threads to work with; else one for each free processor")
        ->type_name("N")
        ->envname("CORVANE_THREADS")
        ->check(CLI::Range(1, 1024).description(""));
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
