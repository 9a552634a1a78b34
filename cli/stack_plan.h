#pragma once

#include <string>
#include <vector>

#include "cli/json.h"
#include "stack/sort/sort.h"

namespace corvane::cli {

/// A stack that would be made.
struct PlannedStack {
    const stack::SortedStack& stack;
    std::string output;
    std::vector<std::string> notes; ///< of the checks that come before the work
};

/// @name What would be done with the frames of a night, for people and for scripts
/// @{
std::string PlanText(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night);
Json PlanJson(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night);
/// @}

/// The name of an output for one of several filters: "m31_Ha.fits"; an empty one stays.
std::string NameFor(const std::string& path, const std::string& filter);

} // namespace corvane::cli
