#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/platform/export.h"
#include "stack/options.h"
#include "stack/prepared_lights.h"

namespace corvane::stack {

/// All that is settled before lights are combined. With the files that the options name it makes the stack, in as many
/// processes as one likes.
struct SavedPlan {
    Options options;
    std::vector<LightRecord> lights; ///< placed; their stars are of no use any more
    int referenceLight = 0;
    std::optional<PixelPlace> reference{};
    std::vector<std::string> notes{};
    std::string key{}; ///< a number for the text that it was read from, in digits
};

/// @name What processes hand on to each other, as JSON
/// Numbers come back with the bits that they had. Reading throws Error, which calls the text `name`, the name of its
/// file, for a text that is damaged, or was made by another version.
/// @{
CORVANE_VISIBLE std::string ToText(const Options& options);
CORVANE_VISIBLE Options OptionsOfText(const std::string& text, const std::string& name);
CORVANE_VISIBLE std::string ToText(const LightRecord& light);
CORVANE_VISIBLE LightRecord LightOfText(const std::string& text, const std::string& name);
CORVANE_VISIBLE std::string ToText(const SavedPlan& plan);
CORVANE_VISIBLE SavedPlan PlanOfText(const std::string& text, const std::string& name);
/// The text of a file of one of these kinds. Throws Error.
CORVANE_VISIBLE std::string ReadSaved(const std::string& path);
/// @}

} // namespace corvane::stack
