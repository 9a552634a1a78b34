#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/step.h"
#include "corvane/core/run.h"
#include "stack/options.h"
#include "stack/sort/sort.h"

namespace corvane::cli {

/// What the commands that read lights have in common.
struct LightWords {
    const catalogue::Operation* operation = nullptr;
    catalogue::Files files;
    catalogue::Settings settings;
    std::string report;
    std::string memory;
    std::string masters;
};

/// Adds the frames and the parameters of an operation on lights, `stack` or `register`, and what both commands write.
void AddLightOptions(CLI::App& command, const catalogue::Operation& operation, LightWords& words);

/// All files that are read.
std::vector<std::string> InputsOf(const LightWords& words);

/// Sorts the frames that options name, and says what does not fit. What is about to be written is passed over.
stack::SortedNight SortedFrames(const stack::Options& options, const std::vector<std::string>& outputs, const Run& run);

/// Sets the memory that the words ask for. Throws UsageError.
void TakeMemory(const LightWords& words);

/// Turns words into options and sets the memory. Throws UsageError and what `stack::OptionsOf` throws.
stack::Options OptionsOf(const LightWords& words);

} // namespace corvane::cli
