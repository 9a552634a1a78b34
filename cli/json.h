#pragma once

#include <nlohmann/json.hpp>

namespace corvane::cli {

/// JSON whose keys stay in the order in which they are set.
using Json = nlohmann::ordered_json;

} // namespace corvane::cli
