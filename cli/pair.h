#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/placement.h"
#include "cli/output.h"
#include "cli/session.h"
#include "io/frame.h"

namespace corvane::cli {

/// The files of a command that makes one image of two.
struct PairFiles {
    std::string first;
    std::string second;
    Output output;
};

/// Adds the two inputs, under the names that help calls them, and the output with its bits.
void AddPairFiles(CLI::App& command, PairFiles& files, const std::string& firstName, const std::string& secondName);

/// The numbers of an option's text, with commas between them. Throws Error for what is no number.
std::vector<double> ParseNumbers(const std::string& name, const std::string& text);

/// Adds an option of numbers that `ParseNumbers` reads.
CLI::Option* AddNumbers(CLI::App& command, const std::string& name, std::vector<double>& numbers,
                        const std::string& help);

/// Adds the options that say how the second image lies on the first; `secondPoints` is the one for its stars.
/// `--align` goes to a word of its own, which `CheckAlign` judges.
void AddPlacement(CLI::App& command, catalogue::Placement& placement, std::string& align,
                  const std::string& secondPoints);

/// Throws UsageError when `--align` and `--points` contradict each other.
void CheckAlign(const std::string& align, const catalogue::Placement& placement);

/// Reads both images, lets `join` make the result of the first one, and writes it. Says how stars aligned them, unless
/// it is to be quiet.
int JoinPair(const PairFiles& files, const Session& session,
             const std::function<catalogue::Fit(io::Frame& first, io::Frame& second)>& join);

} // namespace corvane::cli
