#include "cli/table.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "corvane/core/text.h"

namespace corvane::cli {
namespace {

using Json = nlohmann::ordered_json;

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

std::string CellText(const Json& cell, int digits)
{
    if (cell.is_null()) {
        return {};
    }
    if (cell.is_number()) {
        return CellNumber(cell.get<double>(), digits);
    }
    if (cell.is_string()) {
        return cell.get<std::string>();
    }
    if (cell.is_boolean()) {
        return cell.get<bool>() ? "yes" : "no";
    }
    std::string words;
    for (const Json& word : cell) {
        words += words.empty() ? "" : " ";
        words += word.get<std::string>();
    }
    return words;
}

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
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string blanks(areWords ? 0 : width - cells[i].size(), ' ');
        lines[i] += cells[i].empty() ? "" : std::string("  ").append(blanks).append(cells[i]);
    }
}

} // namespace

Json Table::ToJson() const
{
    Json list = Json::array();
    for (const Json& row : rows) {
        Json object = Json::object();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            object[columns[i].name] = row[i];
        }
        list.push_back(std::move(object));
    }
    return list;
}

std::string Table::ToCsv() const
{
    std::string text;
    for (const Column& column : columns) {
        text += text.empty() ? "" : ",";
        text += column.name;
    }
    for (const Json& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            text += i == 0 ? "\n" : ",";
            text += Quoted(CellText(row[i], columns[i].digits));
        }
    }
    return text + "\n";
}

std::string Table::ToText() const
{
    std::vector<std::string> lines(rows.size() + 1);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::vector<std::string> cells{columns[i].name};
        for (const Json& row : rows) {
            cells.push_back(row[i].is_null() ? "-" : CellText(row[i], columns[i].digits));
        }
        AddCells(cells, columns[i].digits == kWords, lines);
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

} // namespace corvane::cli
