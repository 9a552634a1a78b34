#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "cli/table.h"
#include "io/frame.h"
#include "stars/find_stars.h"

namespace corvane::cli {

/// What the commands about stars have in common.
struct StarWords {
    std::string input;
    std::optional<int> plane;
    int limit = static_cast<int>(stars::FindOptions{}.limit);
    stars::FindOptions find; ///< without the limit
    std::string map;
    bool json = false;
    bool csv = false;
};

/// Adds the input, how stars are looked for, and what is written.
void AddStarOptions(CLI::App& command, StarWords& words);

/// Throws for numbers out of their range, and for outputs that cannot be written or would replace the input; those of
/// an empty name are not wanted.
void CheckStarWords(const StarWords& words, const std::vector<std::string>& outputs);

/// The plane to look at: the one that is asked for, else green of a colour image. Throws Error when it has none.
int ChosenPlane(const StarWords& words, const CStlImage& image);

/// Finds the stars of a plane. Throws Error when there is none.
stars::StarField FindIn(const StarWords& words, const CStlImage& image, int plane);

/// What is printed: JSON, CSV, or for people the table with a summary below it.
void PrintStars(const StarWords& words, const Table& table, nlohmann::ordered_json json, const std::string& summary);

} // namespace corvane::cli
