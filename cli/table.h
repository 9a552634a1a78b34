#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace corvane::cli {

/// @name Digits of a column that is not rounded behind the point
/// @{
inline constexpr int kSignificant = -1; ///< seven digits in all
inline constexpr int kWords = -2;       ///< no numbers but texts, yes or no, or lists of words
/// @}

/// A column of a table.
struct Column {
    std::string name;
    int digits; ///< behind the point
};

/// A table. JSON has its numbers in full, the others have them as the columns say.
struct Table {
    std::vector<Column> columns;
    std::vector<nlohmann::ordered_json> rows; ///< lists with one item for each column; null for nothing

    /// A list with one object for each row.
    nlohmann::ordered_json ToJson() const;
    /// Values with commas between them; the first line names the columns.
    std::string ToCsv() const;
    /// Columns below each other, for people.
    std::string ToText() const;
};

} // namespace corvane::cli
