#pragma once

#include "stack/parts/json_values.h"
#include "stack/prepared_lights.h"

namespace corvane::stack {

Json ToJson(const LightRecord& light);
/// Throws WrongValue, and what the library throws for other kinds of values.
LightRecord LightOf(const Json& json);

} // namespace corvane::stack
