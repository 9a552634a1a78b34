#pragma once

#include <string>

#include "catalogue/operation.h"
#include "cli/json.h"

namespace corvane::cli {

/// @name A table, with numbers in full, or as its columns say
/// @{
/// A list with one object for each row; null for nothing.
Json ToJson(const catalogue::Table& table);
/// Values with commas between them; the first line names the columns.
std::string ToCsv(const catalogue::Table& table);
/// Columns below each other, for people.
std::string ToText(const catalogue::Table& table);
/// @}

/// JSON as it is printed.
std::string ToText(const Json& json);

} // namespace corvane::cli
