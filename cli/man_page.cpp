#include <algorithm>

#include "catalogue/mask.h"
#include "catalogue/operations.h"
#include "catalogue/recipe.h"
#include "cli/documents.h"

namespace corvane::cli {
namespace {

using catalogue::Operation;
using catalogue::Parameter;

constexpr const char* kEnd = R"(.SH SETTINGS
Lines of
.I key=number
below
.IR [section] :
[PrcAutoLevel] has Min, Max and Plane, the defaults of the step
.BR auto-levels .
.SH FILES
.TP
.I $XDG_CONFIG_HOME/corvane/settings.ini
The settings; without XDG_CONFIG_HOME in ~/.config.
.SH ENVIRONMENT
.TP
.B CORVANE_CONFIG
Another file of settings, which then must exist.
.TP
.B CORVANE_MEMORY
Memory for samples, in bytes or with K, M or G; else half of the computer's.
.TP
.B CORVANE_SPILL_DIR
Where images beyond that memory are kept; else the folder for temporary files.
.TP
.B CORVANE_THREADS
Threads to work with where \-\-threads does not say; else one for each free processor.
.SH EXAMPLES
.nf
corvane info light.fits
corvane apply light.fits \-o negative.fits auto\-levels:low=2,high=15 invert
corvane stack light_*.fits \-o stack.fits \-\-dark dark_*.fits \-\-flat flat_*.fits
corvane develop stack.fits \-o m31.png \-\-recipe galaxy
corvane find\-stars stack.fits \-\-csv
.fi
)";

/// Text as it is, at the beginning of a line too.
std::string Roff(const std::string& text)
{
    std::string plain;
    for (const char letter : text) {
        const bool isFirst = plain.empty() || plain.back() == '\n';
        plain += isFirst && (letter == '.' || letter == '\'') ? "\\&" : "";
        plain += letter == '\\' ? "\\(rs" : letter == '-' ? "\\-" : std::string(1, letter);
    }
    return plain;
}

std::string Item(const std::string& head, const std::string& text)
{
    return ".TP\n.B " + Roff(head) + "\n" + Roff(text) + "\n";
}

bool IsPositional(const CLI::Option& option)
{
    return option.get_lnames().empty() && option.get_snames().empty();
}

/// "--output OUT", "LIGHT..."
std::string Words(const CLI::Option& option)
{
    const std::string type = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
    if (!IsPositional(option)) {
        std::string names;
        for (const std::string& name : option.get_snames()) {
            names += (names.empty() ? "-" : ", -") + name;
        }
        for (const std::string& name : option.get_lnames()) {
            names += (names.empty() ? "--" : ", --") + name;
        }
        return names + (type.empty() ? "" : " " + type);
    }
    const std::string name = type.empty() ? option.get_name() : type.substr(0, type.find(' '));
    return name + (option.get_items_expected_max() > 1 ? "..." : "");
}

/// What every command takes is told of once.
bool IsCommon(const CLI::App& app, const CLI::Option& option)
{
    return app.get_option_no_throw(option.get_name()) != nullptr;
}

std::string Options(const CLI::App& command, const CLI::App* common)
{
    std::string text;
    for (const CLI::Option* option : command.get_options()) {
        if (common == nullptr || !IsCommon(*common, *option)) {
            const std::string usual = option->get_default_str();
            text += Item(Words(*option), option->get_description() + (usual.empty() ? "" : " [default " + usual + "]"));
        }
    }
    return text;
}

std::string Positionals(const CLI::App& command)
{
    std::string text;
    for (const CLI::Option* option : command.get_options()) {
        text += IsPositional(*option) ? " " + Words(*option) : "";
    }
    return text;
}

std::string Command(const CLI::App& command, const CLI::App& app)
{
    const std::string footer = command.get_footer();
    return ".SS corvane " + command.get_name() + " [OPTION...]" + Roff(Positionals(command)) + "\n" +
           Roff(command.get_description()) + ".\n" + Options(command, &app) +
           (footer.empty() ? "" : ".PP\n" + Roff(footer) + "\n");
}

std::string Recipes()
{
    std::string text = ".SH RECIPES\nWhat\n.B corvane develop\nworks by; so does \\-\\-recipe of\n.BR apply .\n";
    for (const catalogue::ShippedRecipe& recipe : catalogue::ShippedRecipes()) {
        text += Item(recipe.name, recipe.summary);
    }
    return text;
}

std::string ParameterItems(const std::vector<Parameter>& parameters)
{
    std::string text;
    for (const Parameter& parameter : parameters) {
        text += ".RS\n.TP\n.I " + Roff(parameter.name) + "\n" + Roff(DescriptionOf(parameter)) + "\n.RE\n";
    }
    return text;
}

std::string Step(const Operation& operation)
{
    return Item(operation.name, operation.summary + (TakesMask(operation) ? " (mask)" : "")) +
           ParameterItems(OwnParameters(operation));
}

std::string MixText()
{
    return ".SS Masks and strength\nSteps that are marked (mask) also take:\n" +
           ParameterItems(catalogue::MixParameters()) + ".PP\n" + Roff(catalogue::kMixHelp) + "\n";
}

} // namespace

std::string ManPage(const CLI::App& app)
{
    std::string page = ".TH CORVANE 1 \"\" \"Corvane " CORVANE_VERSION "\"\n.SH NAME\ncorvane \\- " +
                       app.get_description() + "\n.SH SYNOPSIS\n.B corvane\n.I COMMAND\n[OPTION...] [FILE...]\n" +
                       ".SH OPTIONS\nOf every command; \\-\\-version stands alone.\n" + Options(app, nullptr) +
                       ".SH COMMANDS\n";
    for (const CLI::App* command : CommandsOf(app)) {
        page += Command(*command, app);
    }
    page += ".SH STEPS\nWhat\n.B corvane apply\ndoes, written\n.IR name:key=value,key=value .\n";
    for (const Operation& operation : catalogue::Operations()) {
        page += operation.IsStep() ? Step(operation) : "";
    }
    return page + MixText() + Recipes() + kEnd + ".SH EXIT STATUS\n" + Roff(app.get_footer()) + "\n";
}

} // namespace corvane::cli
