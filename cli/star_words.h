#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "catalogue/step.h"
#include "cli/json.h"
#include "cli/session.h"

namespace corvane::cli {

/// What the commands about stars have in common.
struct StarWords {
    const catalogue::Operation* operation = nullptr;
    catalogue::Files files;
    catalogue::Settings settings;
    std::string map;
    bool json = false;
    bool csv = false;

    const std::string& Input() const { return files.begin()->second.front(); }
};

/// Adds the command of an operation that looks for stars: the input, how they are looked for, and what is written.
CLI::App& AddStarCommand(CLI::App& app, Session& session, const char* name, StarWords& words);

/// The arguments that were given. Throws for those that are not allowed, and for outputs that cannot be written or
/// would replace the input; those of an empty name are not wanted.
catalogue::Arguments CheckedArguments(const StarWords& words, const std::vector<std::string>& outputs);

/// What is printed: JSON of the field and its stars, the stars as CSV, or for people with a summary below them.
void PrintStars(const StarWords& words, const Json& field, const catalogue::Table& stars, const std::string& summary);

/// What the table of one row tells of the field of a file, as JSON.
Json FieldJson(const StarWords& words, const catalogue::Table& field);

/// An error of the input, in its file's name.
Error OfInput(const Error& error, const StarWords& words);

/// Does work on the input, with errors in its name.
template <class Work>
auto OnInput(const StarWords& words, const Work& work)
{
    try {
        return work();
    } catch (const Error& error) {
        throw OfInput(error, words);
    }
}

} // namespace corvane::cli
