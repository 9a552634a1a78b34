#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "catalogue/recipe.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "cli/terminal.h"
#include "corvane/core/error.h"

namespace corvane::cli {
namespace {

constexpr int kSummaryColumn = 12;

void ListRecipes(int width)
{
    for (const catalogue::ShippedRecipe& recipe : catalogue::ShippedRecipes()) {
        std::cout << Wrapped("  " + recipe.name, recipe.summary, kSummaryColumn, width);
    }
    std::cout << "\n`corvane recipes NAME` prints one, `corvane develop IN -o OUT --recipe NAME` works by it.\n";
}

/// The text of a shipped recipe, or what was done to an image.
std::string TextOf(const std::string& nameOrImage)
{
    const auto& shipped = catalogue::ShippedRecipes();
    const auto named = std::find_if(shipped.begin(), shipped.end(),
                                    [&](const catalogue::ShippedRecipe& recipe) { return recipe.name == nameOrImage; });
    if (named != shipped.end()) {
        return named->text;
    }
    std::string text = catalogue::RecipeOf(OpenInput(nameOrImage, io::Cubes::kFirstPlane)->GetHeader());
    if (text.empty()) {
        throw FileError(nameOrImage, "its header tells of no step");
    }
    return text;
}

} // namespace

void AddRecipes(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("recipes", "List the recipes, or print one");
    auto name = std::make_shared<std::string>();
    AddCommonOptions(command, session);
    command
        .add_option("name", *name,
                    "The recipe to print, or an image: the steps that its header tells of are printed as a recipe")
        ->type_name("NAME|IN");
    command.footer("What is printed can be kept, changed, and given to --recipe of `apply` and `develop`.");
    command.callback([&session, name] {
        session.work = [name] {
            if (name->empty()) {
                ListRecipes(TerminalWidth(STDOUT_FILENO));
            } else {
                std::cout << TextOf(*name);
            }
            return kDone;
        };
    });
}

} // namespace corvane::cli
