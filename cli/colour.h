#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/colour_composite.h"
#include "cli/output.h"
#include "cli/session.h"
#include "io/frame.h"

namespace corvane::cli {

/// The words of a command that makes one colour image of several frames.
struct ColourWords {
    std::vector<std::string> inputs;
    Output output;
    catalogue::ColourOptions options;
};

/// The function of the catalogue that does the work.
using MakeColour = std::vector<catalogue::Fit> (*)(std::vector<io::Frame>& frames,
                                                   const catalogue::ColourOptions& options,
                                                   const catalogue::Context& context);

/// Adds what these commands share, with the inputs under the names that help calls them: files, alignment, and the work
/// itself, which reads the frames, makes the first one the result, writes it, and says how stars aligned the others.
void AddColourCommand(CLI::App& command, const std::shared_ptr<ColourWords>& words, Session& session, MakeColour make,
                      const std::vector<std::string>& names, const char* scaleNames = kScaleNames);

/// Adds `--outside`.
void AddOutside(CLI::App& command, ColourWords& words);

/// What help says of alignment.
std::string AlignmentFooter();

} // namespace corvane::cli
