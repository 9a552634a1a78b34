#include "cli/table.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <variant>
#include <vector>

#include "corvane/core/text.h"

namespace corvane::cli {
namespace {

using catalogue::Cell;
using catalogue::Column;
using catalogue::Table;

constexpr int kSampleDigits = 7; // samples are floats

std::string CellNumber(double value, int digits)
{
    if (digits >= 0) {
        return NumberText(value, digits);
    }
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, kSampleDigits).ptr;
    return {text, end};
}

std::string CellText(const Cell& cell, int digits)
{
    if (const auto* number = std::get_if<double>(&cell)) {
        return CellNumber(*number, digits);
    }
    if (const auto* flag = std::get_if<bool>(&cell)) {
        return *flag ? "yes" : "no";
    }
    if (const auto* text = std::get_if<std::string>(&cell)) {
        return *text;
    }
    std::string words;
    if (const auto* list = std::get_if<std::vector<std::string>>(&cell)) {
        for (const std::string& word : *list) {
            words += (words.empty() ? "" : " ") + word;
        }
    }
    return words;
}

struct ToCellJson {
    int digits;

    Json operator()(std::monostate) const { return {}; }
    /// Whole numbers stay whole.
    Json operator()(double number) const { return digits == 0 ? Json(static_cast<long long>(number)) : Json(number); }
    template <class Value>
    Json operator()(const Value& value) const
    {
        return value;
    }
};

std::string Quoted(const std::string& text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char letter : text) {
        quoted.append(letter == '"' ? 2 : 1, letter);
    }
    return quoted + "\"";
}

/// Numbers end in one place; words begin in one.
void AddCells(const std::vector<std::string>& cells, bool areWords, std::vector<std::string>& lines)
{
    std::size_t width = 0;
    for (const std::string& cell : cells) {
        width = std::max(width, cell.size());
    }
    const auto longest =
        std::max_element(lines.begin(), lines.end(), [](const auto& a, const auto& b) { return a.size() < b.size(); });
    const std::size_t begin = longest->size(); // words before may end anywhere
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines[i].resize(cells[i].empty() ? lines[i].size() : begin, ' ');
        const std::string blanks(areWords ? 0 : width - cells[i].size(), ' ');
        lines[i] += cells[i].empty() ? "" : std::string("  ").append(blanks).append(cells[i]);
    }
}

} // namespace

Json ToJson(const Table& table)
{
    Json list = Json::array();
    for (const std::vector<Cell>& row : table.rows) {
        Json object = Json::object();
        for (std::size_t i = 0; i < row.size(); ++i) {
            object[table.columns[i].name] = std::visit(ToCellJson{table.columns[i].digits}, row[i]);
        }
        list.push_back(std::move(object));
    }
    return list;
}

std::string ToCsv(const Table& table)
{
    std::string text;
    for (const Column& column : table.columns) {
        text += text.empty() ? "" : ",";
        text += column.name;
    }
    for (const std::vector<Cell>& row : table.rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += i == 0 ? "\n" : ",";
            text += Quoted(CellText(row[i], table.columns[i].digits));
        }
    }
    return text + "\n";
}

std::string ToText(const Table& table)
{
    std::vector<std::string> lines(table.rows.size() + 1);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const Column& column = table.columns[i];
        std::vector<std::string> cells{column.name};
        for (const std::vector<Cell>& row : table.rows) {
            cells.push_back(row[i].index() == 0 ? "-" : CellText(row[i], column.digits));
        }
        AddCells(cells, column.digits == catalogue::kWords, lines);
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

std::string ToText(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace corvane::cli
