#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "stack/names.h"
#include "stack/options.h"

namespace corvane::cli {

/// What the commands that read lights have in common.
struct LightWords {
    stack::Options options;
    std::string reference;
    std::vector<int> star; ///< x and y; empty when it was not given
    std::string bayer;     ///< how `--bayer` was given; empty when it was not
    std::string report;
    std::string memory;
};

/// Adds the lights, their calibration frames, and how they are aligned.
void AddLightOptions(CLI::App& command, LightWords& words);

/// All files that are read.
std::vector<std::string> InputsOf(const stack::Options& options);

/// Turns words into options and sets the memory. Throws UsageError and what `stack::CheckOptions` throws.
void FinishLightOptions(LightWords& words, const std::string& command);

/// Adds an option whose values have names; the first one is the default unless another is said.
template <class Value, std::size_t count>
CLI::Option* AddChoice(CLI::App& command, const std::string& name, const stack::Names<Value, count>& names,
                       std::function<void(Value)> choose, const std::string& help)
{
    std::string all;
    for (const auto& [word, value] : names) {
        all.append(all.empty() ? "" : "|").append(word);
    }
    const auto read = [=](const std::string& given) {
        const auto found =
            std::find_if(names.begin(), names.end(), [&](const auto& item) { return given == item.first; });
        if (found == names.end()) {
            throw CLI::ValidationError(name + " = " + given, "must be " + all);
        }
        choose(found->second);
    };
    return command.add_option_function<std::string>(name, read, help)->type_name(all);
}

} // namespace corvane::cli
