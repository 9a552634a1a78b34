#pragma once

#include <string_view>
#include <vector>

#include "catalogue/groups.h"

namespace corvane::cli {

/// @name The catalogue's operations, and those of the rooms above it that describe themselves in the same way
/// @{
const std::vector<catalogue::Group>& AllGroups();
const std::vector<catalogue::Operation>& AllOperations();

/// The one with this name, which it must have.
const catalogue::Operation& OperationCalled(std::string_view name);
/// @}

} // namespace corvane::cli
