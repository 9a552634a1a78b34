#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/operation_command.h"

namespace corvane::cli {
namespace {

void Print(const catalogue::Table& table, bool json)
{
    const std::vector<double>& row = table.rows.front();
    if (!json) {
        std::printf("x %.1f, y %.1f, correlation %.3f, rms %.6g\n", row[0], row[1], row[2], row[3]);
        return;
    }
    nlohmann::ordered_json all;
    for (std::size_t i = 0; i < row.size(); ++i) {
        all[table.columns[i]] = row[i];
    }
    std::cout << all.dump(2) << "\n";
}

} // namespace

void AddMatch(CLI::App& app, Session& session)
{
    AddOperation(app, session, "match", Print);
}

} // namespace corvane::cli
