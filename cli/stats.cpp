#include <cstddef>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "catalogue/parameter.h"
#include "catalogue/region.h"
#include "cli/cancel.h"
#include "cli/session.h"
#include "cli/table.h"
#include "corvane/core/error.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

using catalogue::RegionMeasures;
using Json = nlohmann::ordered_json;

struct StatsOptions {
    std::vector<std::string> files;
    std::string rect;
    bool json = false;
    bool csv = false;
};

std::optional<CRect> ParseRectangle(const std::string& text)
{
    if (text.empty()) {
        return std::nullopt;
    }
    return std::get<CRect>(catalogue::ParseValue(catalogue::RectangleParameter(), text));
}

// Here the catalogue speaks of one of the images: its name belongs into the message.
std::vector<RegionMeasures> Measure(const std::string& file, const std::optional<CRect>& rect)
{
    const io::Frame frame = io::Load(file);
    try {
        return catalogue::MeasureRegion(frame.image, rect ? &*rect : nullptr);
    } catch (const Error& error) {
        throw OfFile(file, error);
    }
}

Table EmptyTable()
{
    return {{{"plane", 0},
             {"max", kSignificant},
             {"min", kSignificant},
             {"mean", kSignificant},
             {"median", kSignificant},
             {"count", 0},
             {"blank", 0},
             {"not_finite", 0},
             {"file", kWords}},
            {}};
}

/// A row for each plane; values that mean nothing stay empty.
void AddRows(const std::string& file, const std::vector<RegionMeasures>& planes, Table& table)
{
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const RegionMeasures& plane = planes[i];
        const auto value = [&](double v) { return plane.counted > 0 ? Json(v) : Json(); };
        table.rows.push_back({i, value(plane.max), value(plane.min), value(plane.mean), value(plane.median),
                              plane.counted, plane.blank, plane.infinite, file});
    }
}

void Print(const StatsOptions& options, const Table& table, const Json& errors)
{
    if (options.json) {
        Json all = table.ToJson();
        all.insert(all.end(), errors.begin(), errors.end());
        std::cout << all.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
    } else if (options.csv) {
        std::cout << table.ToCsv();
    } else if (!table.rows.empty()) {
        std::cout << table.ToText();
    }
}

// A file that cannot be read does not keep the others from being measured.
int Stats(const StatsOptions& options)
{
    const std::optional<CRect> rect = ParseRectangle(options.rect);
    Table table = EmptyTable();
    Json errors = Json::array();
    for (const std::string& file : options.files) {
        ThrowIfCancelled();
        try {
            AddRows(file, Measure(file, rect), table);
        } catch (const Error& error) {
            std::cerr << "corvane: " << error.what() << "\n";
            errors.push_back({{"file", file}, {"error", error.Reason()}});
        }
    }
    Print(options, table, errors);
    return errors.empty() ? kDone : kFailed;
}

} // namespace

void AddStats(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("stats", "Measure the samples of images or of a region of them");
    auto options = std::make_shared<StatsOptions>();
    AddCommonOptions(command, session);
    command.add_option("files", options->files, "The images to measure")->required()->type_name("IN");
    command.add_option("--rect", options->rect, "Measure this rectangle only; right and bottom are the first outside")
        ->type_name("L:T:R:B");
    CLI::Option* const json =
        command.add_flag("--json", options->json, "Print JSON: a list with one object for each plane of each file");
    command.add_flag("--csv", options->csv, "Print the table with commas between its values")->excludes(json);
    command.footer(
        "Blank samples, NaN and infinities are left out, and counted. The median of an even number of samples "
        "is the upper of the two in the middle.");
    command.callback([&session, options] { session.work = [options] { return Stats(*options); }; });
}

} // namespace corvane::cli
