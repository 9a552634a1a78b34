#include <cstdio>
#include <iostream>

#include "cli/operation_command.h"
#include "cli/table.h"

namespace corvane::cli {
namespace {

void PrintMatch(const catalogue::Table& table, bool json)
{
    const auto number = [&](std::size_t column) { return std::get<double>(table.rows.front()[column]); };
    if (json) {
        std::cout << ToText(ToJson(table).front());
    } else {
        std::printf("x %.1f, y %.1f, correlation %.3f, rms %.6g\n", number(0), number(1), number(2), number(3));
    }
}

} // namespace

void AddMatch(CLI::App& app, Session& session)
{
    AddOperation(app, session, "match", PrintMatch);
}

} // namespace corvane::cli
