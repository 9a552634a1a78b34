#include "cli/session.h"

#include <set>
#include <string>

#include <CLI/Validators.hpp>

namespace corvane::cli {

void AddCommonOptions(CLI::App& command, Session& session)
{
    command.add_flag("-v,--verbose", session.verbose, "Say more: a line for every stage of the work");
    command.add_flag("-q,--quiet", session.quiet, "Say nothing but errors and what was asked for");
}

void AddOutputOption(CLI::App& command, std::string& output, const std::string& what)
{
    command.add_option("-o,--output", output, what)->required()->type_name("OUT");
}

void AddBitsOption(CLI::App& command, int& bits)
{
    command.add_option("--bits", bits, "Bits per sample: 8, 16, 32, or -32 and -64 for floats; else the format's own")
        ->check(CLI::IsMember(std::set<int>{8, 16, 32, -32, -64}))
        ->type_name("N");
}

} // namespace corvane::cli
