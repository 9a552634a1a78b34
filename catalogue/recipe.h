#pragma once

#include <istream>
#include <string>
#include <vector>

#include "catalogue/step.h"

namespace corvane::catalogue {

/// Steps that are done one after the other, as a text has them: a step a line, between empty lines and lines that begin
/// with #.
using Recipe = std::vector<Step>;

/// A recipe that comes with the library.
struct ShippedRecipe {
    std::string name;
    std::string summary; ///< what it is for, one line
    std::string text;
};

/// The recipes that make a picture of a stack.
CORVANE_VISIBLE const std::vector<ShippedRecipe>& ShippedRecipes();
CORVANE_VISIBLE std::vector<std::string> NamesOfRecipes();

/// The one of them that serves where none is named.
inline constexpr const char* kUsualRecipe = "galaxy";

/// Reads a recipe: the shipped one of this name, else the file. Throws Error that
/// tells the names, or names the file and the line.
CORVANE_VISIBLE Recipe FindRecipe(const std::string& nameOrFile);

/// The same from a stream; `path` is its name in errors.
CORVANE_VISIBLE Recipe ReadRecipe(std::istream& stream, const std::string& path);

/// The text of a recipe, in the form that `ReadRecipe` reads. Throws Error for a value that one line cannot hold.
CORVANE_VISIBLE std::string RecipeText(const Recipe& recipe);

/// What was done to a frame, as the text of a recipe: the steps that its HISTORY names; what other commands did is told
/// in comments. Empty when it names no step.
CORVANE_VISIBLE std::string RecipeOf(const io::Header& header);

/// @name Running recipes
/// One recipe serves many frames, of one plane and in colour, with stars and without: a step that a frame does not fit
/// (an Error of kind kInput) is left out, and a note tells so. Else they throw as `RunStep`.
/// @{
CORVANE_VISIBLE void RunIfItFits(const Step& step, io::Frame& frame, const Run& run);
CORVANE_VISIBLE void RunRecipe(const Recipe& recipe, io::Frame& frame, const Run& run);
/// @}

} // namespace corvane::catalogue
