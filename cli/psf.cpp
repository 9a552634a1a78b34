#include <iostream>

#include "cli/operation_command.h"
#include "cli/table.h"

namespace corvane::cli {
namespace {

void PrintPsf(const catalogue::Table& zones, bool json)
{
    std::cout << (json ? ToText(ToJson(zones)) : ToText(zones));
}

} // namespace

void AddPsf(CLI::App& app, Session& session)
{
    AddOperation(app, session, "psf", PrintPsf);
}

} // namespace corvane::cli
