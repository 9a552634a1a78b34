#include "catalogue/recipe.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

#include "catalogue/names.h"
#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/input_file.h"

namespace corvane::catalogue {
namespace {

constexpr std::string_view kDoneByStep = "corvane apply ";
constexpr std::string_view kDoneByCommand = "corvane ";

bool IsControl(char letter)
{
    return std::iscntrl(static_cast<unsigned char>(letter)) != 0;
}

/// Adds the step of a line, if it has one.
void AddStepOf(std::string_view line, Recipe& recipe)
{
    if (line.empty() || line.front() == '#') {
        return;
    }
    if (std::any_of(line.begin(), line.end(), [](char letter) { return letter != '\t' && IsControl(letter); })) {
        throw ParameterError("is no text; `corvane recipes FILE` prints the recipe of an image");
    }
    recipe.emplace_back(line);
}

} // namespace

std::vector<std::string> NamesOfRecipes()
{
    std::vector<std::string> names;
    for (const ShippedRecipe& shipped : ShippedRecipes()) {
        names.push_back(shipped.name);
    }
    return names;
}

Recipe ReadRecipe(std::istream& stream, const std::string& path)
{
    Recipe recipe;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        try {
            AddStepOf(Trim(line, kLineBlanks), recipe);
        } catch (const Error& error) {
            throw FileError(path, "line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (stream.bad()) {
        throw FileError(path, "cannot be read");
    }
    if (recipe.empty()) {
        throw FileError(path, "has no step");
    }
    return recipe;
}

Recipe FindRecipe(const std::string& nameOrFile)
{
    for (const ShippedRecipe& shipped : ShippedRecipes()) {
        if (shipped.name == nameOrFile) {
            std::istringstream text(shipped.text);
            return ReadRecipe(text, nameOrFile);
        }
    }
    std::error_code ignored;
    if (!std::filesystem::exists(nameOrFile, ignored)) {
        const std::vector<std::string> names = NamesOfRecipes();
        throw ParameterError("recipe", nameOrFile,
                             "must be " + Joined(names) + ", or a file" + Suggestion(nameOrFile, names));
    }
    io::CheckOrdinaryFile(nameOrFile);
    std::ifstream file(nameOrFile);
    if (!file) {
        throw FileError(nameOrFile, "cannot be read");
    }
    return ReadRecipe(file, nameOrFile);
}

std::string RecipeText(const Recipe& recipe)
{
    std::string text;
    for (const Step& step : recipe) {
        const std::string line = ToText(step);
        if (std::any_of(line.begin(), line.end(), IsControl)) {
            throw ParameterError("a value has several lines; a recipe has a step a line").Of(step.operation->name);
        }
        text += line + "\n";
    }
    return text;
}

std::string RecipeOf(const io::Header& header)
{
    std::string text;
    bool hasStep = false;
    for (const std::string& line : header.History()) {
        if (line.starts_with(kDoneByStep)) {
            text += line.substr(kDoneByStep.size()) + "\n";
            hasStep = true;
        } else if (line.starts_with(kDoneByCommand)) {
            text += "# " + line + "\n";
        }
    }
    return hasStep ? text : std::string();
}

void RunIfItFits(const Step& step, io::Frame& frame, const Run& run)
{
    try {
        RunStep(step, frame, run);
    } catch (const Error& error) {
        if (!error.Is(Error::Kind::kInput)) {
            throw;
        }
        run.TellNote(step.operation->name + " is left out: the " + error.Subject() + " " + error.Reason());
    }
}

void RunRecipe(const Recipe& recipe, io::Frame& frame, const Run& run)
{
    for (const Step& step : recipe) {
        RunIfItFits(step, frame, run);
    }
}

} // namespace corvane::catalogue
