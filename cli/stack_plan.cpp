#include "cli/stack_plan.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>

#include "cli/table.h"

namespace corvane::cli {
namespace {

using catalogue::Cell;
using catalogue::kWords;
using catalogue::Table;

/// "10 from night/dark_001.fits"
Cell FramesCell(const std::vector<std::string>& files)
{
    return files.empty() ? Cell() : Cell(std::to_string(files.size()) + " from " + files.front());
}

Cell TextCell(const std::string& text)
{
    return text.empty() ? Cell() : Cell(text);
}

/// All exposures of a group together.
std::optional<double> TotalOf(const stack::LightGroup& group)
{
    return group.exposure ? std::optional(*group.exposure * static_cast<double>(group.lights.size())) : std::nullopt;
}

/// A row for each group of lights that are calibrated alike.
Table TableOf(const std::vector<PlannedStack>& stacks)
{
    Table table{.columns = {{"output", kWords},
                            {"filter", kWords},
                            {"lights", 0},
                            {"exposure"},
                            {"total"},
                            {"session", kWords},
                            {"darks", kWords},
                            {"flats", kWords},
                            {"flat_darks", kWords},
                            {"bias", kWords}}};
    const auto number = [](const std::optional<double>& value) { return value ? Cell(*value) : Cell(); };
    for (const PlannedStack& planned : stacks) {
        for (const stack::LightGroup& group : planned.stack.groups) {
            table.rows.push_back({planned.output, TextCell(planned.stack.filter),
                                  static_cast<double>(group.lights.size()), number(group.exposure),
                                  number(TotalOf(group)), TextCell(group.session), FramesCell(group.frames.darks),
                                  FramesCell(group.frames.flats), FramesCell(group.frames.flatDarks),
                                  FramesCell(group.frames.bias)});
        }
    }
    return table;
}

Json NumberJson(const std::optional<double>& value)
{
    return value ? Json(*value) : Json();
}

Json GroupJson(const stack::LightGroup& group)
{
    return {{"lights", group.lights},
            {"exposure", NumberJson(group.exposure)},
            {"total", NumberJson(TotalOf(group))},
            {"session", group.session.empty() ? Json() : Json(group.session)},
            {"darks", group.frames.darks},
            {"flats", group.frames.flats},
            {"flat_darks", group.frames.flatDarks},
            {"bias", group.frames.bias}};
}

/// The warnings of sorting and the notes of all stacks, each once.
std::vector<std::string> WarningsOf(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night)
{
    std::vector<std::string> warnings = night.warnings;
    for (const PlannedStack& planned : stacks) {
        for (const std::string& note : planned.notes) {
            if (std::find(warnings.begin(), warnings.end(), note) == warnings.end()) {
                warnings.push_back(note);
            }
        }
    }
    return warnings;
}

} // namespace

std::string PlanText(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night)
{
    std::string text = ToText(TableOf(stacks));
    for (const stack::LeftOut& left : night.leftOut) {
        const std::size_t more = left.files.size() - 1;
        text += "left out: " + left.files.front() + (more > 0 ? " and " + std::to_string(more) + " more" : "") + ": " +
                left.reason + "\n";
    }
    for (const std::string& warning : WarningsOf(stacks, night)) {
        text += "note: " + warning + "\n";
    }
    return text;
}

Json PlanJson(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night)
{
    Json json{{"stacks", Json::array()}, {"left_out", Json::array()}, {"notes", WarningsOf(stacks, night)}};
    for (const PlannedStack& planned : stacks) {
        Json groups = Json::array();
        for (const stack::LightGroup& group : planned.stack.groups) {
            groups.push_back(GroupJson(group));
        }
        const std::string& filter = planned.stack.filter;
        json["stacks"].push_back({{"output", planned.output},
                                  {"filter", filter.empty() ? Json() : Json(filter)},
                                  {"groups", std::move(groups)}});
    }
    for (const stack::LeftOut& left : night.leftOut) {
        json["left_out"].push_back({{"files", left.files}, {"reason", left.reason}});
    }
    return json;
}

std::string NameFor(const std::string& path, const std::string& filter)
{
    if (path.empty()) {
        return path;
    }
    std::string word = filter.empty() ? "no-filter" : filter;
    std::replace_if(
        word.begin(), word.end(), [](unsigned char c) { return std::isalnum(c) == 0 && c != '+' && c != '-'; }, '-');
    const std::filesystem::path name(path);
    const std::filesystem::path called = name.stem().string() + "_" + word + name.extension().string();
    return (name.parent_path() / called).string();
}

} // namespace corvane::cli
