#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "cli/all_operations.h"
#include "cli/cancel.h"
#include "cli/operation_command.h"
#include "cli/output.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "cli/table.h"
#include "corvane/core/error.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

using catalogue::Table;

struct StatsWords {
    const catalogue::Operation* operation = nullptr;
    std::vector<std::string> files;
    catalogue::Settings settings;
    bool json = false;
    bool csv = false;
};

/// The planes of a file, each with its name.
Table Measure(const StatsWords& words, const std::string& file, const catalogue::Arguments& arguments, const Run& run)
{
    catalogue::Inputs inputs;
    inputs["image"].push_back(LoadInput(file));
    try {
        Table table =
            std::get<Table>(catalogue::RunOperation(*words.operation, std::move(inputs), arguments, run).at("planes"));
        table.columns.push_back({"file", catalogue::kWords});
        for (std::vector<catalogue::Cell>& row : table.rows) {
            row.emplace_back(file);
        }
        return table;
    } catch (const Error& error) {
        throw OfFile(file, error);
    }
}

void Print(const StatsWords& words, const Table& table, const Json& errors)
{
    if (words.json) {
        Json all = ToJson(table);
        all.insert(all.end(), errors.begin(), errors.end());
        std::cout << ToText(all);
    } else if (!table.rows.empty()) {
        std::cout << (words.csv ? ToCsv(table) : ToText(table));
    }
}

// A file that cannot be read does not keep the others from being measured.
int Stats(const StatsWords& words, const Run& run)
{
    const catalogue::Arguments arguments = catalogue::MakeArguments(*words.operation, words.settings);
    Table all;
    Json errors = Json::array();
    for (const std::string& file : words.files) {
        ThrowIfCancelled();
        try {
            Table table = Measure(words, file, arguments, run);
            all.columns = table.columns;
            std::move(table.rows.begin(), table.rows.end(), std::back_inserter(all.rows));
        } catch (const Error& error) {
            std::cerr << "corvane: " << error.what() << "\n";
            errors.push_back({{"file", file}, {"error", error.Reason()}});
        }
    }
    Print(words, all, errors);
    return errors.empty() ? kDone : kFailed;
}

} // namespace

void AddStats(CLI::App& app, Session& session)
{
    auto words = std::make_shared<StatsWords>();
    words->operation = &OperationCalled("stats");
    CLI::App& command = AddCommand(app, session, *words->operation);
    command.add_option("files", words->files, "The images to measure; - is standard input")
        ->required()
        ->type_name("IN");
    AddParameters(command, *words->operation, words->settings);
    AddTableFlags(command, words->json, words->csv);
    command.callback([&session, words] { session.work = [&session, words] { return Stats(*words, RunOf(session)); }; });
}

} // namespace corvane::cli
