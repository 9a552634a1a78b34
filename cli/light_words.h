#pragma once

#include <string>

#include <CLI/App.hpp>

#include "catalogue/step.h"
#include "stack/options.h"

namespace corvane::cli {

/// What the commands that read lights have in common.
struct LightWords {
    const catalogue::Operation* operation = nullptr;
    catalogue::Files files;
    catalogue::Settings settings;
    std::string report;
    std::string memory;
};

/// Adds the frames and the parameters of an operation on lights, `stack` or `register`, and what both commands write.
void AddLightOptions(CLI::App& command, const catalogue::Operation& operation, LightWords& words);

/// All files that are read.
std::vector<std::string> InputsOf(const LightWords& words);

/// Turns words into options and sets the memory. Throws UsageError and what `stack::OptionsOf` throws.
stack::Options OptionsOf(const LightWords& words);

} // namespace corvane::cli
