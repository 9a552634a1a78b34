#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/recipe.h"
#include "cli/output.h"

namespace corvane::cli {

/// Adds `--recipe`.
CLI::Option* AddRecipe(CLI::App& command, std::string& recipe, const std::string& what);

/// The files that steps read, or those that they write.
std::vector<std::string> FilesOfSteps(const std::vector<catalogue::Step>& steps,
                                      std::vector<std::string> (*filesOf)(const catalogue::Arguments&));

/// Runs steps on the frame of a file, which errors name, each by `runStep`. What steps write joins the others.
void RunOnFile(const std::string& file, const catalogue::Recipe& steps,
               void (*runStep)(const catalogue::Step&, io::Frame&, const Run&), io::Frame& frame, Provisional& others,
               const Run& run);

} // namespace corvane::cli
