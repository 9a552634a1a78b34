#include <string>
#include <vector>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/recipe.h"
#include "cli/all_operations.h"
#include "cli/documents.h"
#include "corvane/core/ascii.h"

namespace corvane::cli {
namespace {

using catalogue::Kind;
using catalogue::Operation;
using catalogue::Parameter;

// What nothing is known of, bash completes by the names of files.
constexpr const char* kScript = R"sh(
# Words that may stand for what was typed, all of them behind a head.
_corvane_offer() {
    mapfile -t COMPREPLY < <(compgen -P "$2" -W "$1" -- "${typed#"$2"}")
}

# A step: its name, one of its parameters, or a value of that.
_corvane_step() {
    local head=${typed%"${typed##*[:,]}"} item=${typed##*[:,]}
    if [[ -z $head ]]; then
        _corvane_offer "$(_corvane_words steps)" ''
    elif [[ $item == *=* ]]; then
        _corvane_offer "$(_corvane_words "${typed%%:*} ${item%%=*}")" "$head${item%%=*}="
    else
        _corvane_offer "$(_corvane_words "${typed%%:*}:")" "$head"
        compopt -o nospace 2>/dev/null
    fi
}

_corvane() {
    local line=${COMP_LINE:0:COMP_POINT} typed command='' word words values breaks
    typed=${line##*[[:space:]]}
    read -ra words <<<"${line%"$typed"}"
    for word in "${words[@]:1}"; do
        [[ $word == -* ]] || { command=$word && break; }
    done
    COMPREPLY=()
    values=$(_corvane_words "$command ${words[-1]}")
    if [[ -n $command && -n $values ]]; then
        _corvane_offer "$values" ''
    elif [[ $typed == -* ]]; then
        _corvane_offer "$(_corvane_words "${command:-corvane} options")" ''
    elif [[ -z $command ]]; then
        _corvane_offer "$(_corvane_words commands)" ''
    elif [[ $command == apply && ${words[-1]} != apply && ${words[-1]} != -* ]]; then
        _corvane_step
    fi
    # Readline takes what stands before its last break as given.
    breaks=${COMP_WORDBREAKS//[^:=]/}
    [[ -z $breaks ]] || COMPREPLY=("${COMPREPLY[@]#"${typed%"${typed##*["$breaks"]}"}"}")
}
complete -o bashdefault -o default -F _corvane corvane
)sh";

std::string Case(const std::string& key, const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return words.empty() ? "" : "    '" + key + "') echo '" + text + "' ;;\n";
}

std::vector<std::string> ValuesOf(const Parameter& parameter)
{
    return parameter.kind == Kind::Flag      ? std::vector<std::string>{"yes", "no"}
           : parameter.kind == Kind::Numbers ? std::vector<std::string>()
                                             : parameter.choices;
}

/// The words of a type that stand for themselves, as auto of auto|MIN,MAX.
std::vector<std::string> SmallWords(const std::string& type)
{
    std::vector<std::string> words = CLI::detail::split(type, '|');
    std::erase_if(words, [](const std::string& word) { return word.empty() || word != Lower(word); });
    return words;
}

/// The values of an option: what its type has in braces, or what its operation says of it, or else small words of it.
std::vector<std::string> ValuesOf(const CLI::Option& option, const Operation* operation)
{
    const std::string type = option.get_type_name();
    if (const std::size_t brace = type.find(":{"); brace != std::string::npos) {
        return CLI::detail::split(type.substr(brace + 2, type.size() - brace - 3), ',');
    }
    const auto& names = option.get_lnames();
    const bool isKnown = operation != nullptr && !names.empty() && option.get_items_expected_max() > 0;
    const Parameter* parameter = isKnown ? catalogue::FindNamed(operation->parameters, names.front()) : nullptr;
    return parameter != nullptr ? ValuesOf(*parameter) : SmallWords(type);
}

std::string CommandCases(const CLI::App& command)
{
    const Operation* operation = catalogue::FindNamed(AllOperations(), command.get_name());
    std::vector<std::string> options;
    std::string values;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            options.push_back("--" + name);
            values += Case(command.get_name() + " --" + name, ValuesOf(*option, operation));
        }
    }
    for (const Parameter& parameter : operation == nullptr ? std::vector<Parameter>() : operation->parameters) {
        values += parameter.isWord ? Case(command.get_name() + " " + command.get_name(), parameter.choices) : "";
    }
    return Case(command.get_name() + " options", options) + values;
}

std::string StepCases(const Operation& step)
{
    std::vector<std::string> keys;
    std::string values;
    for (const Parameter& parameter : ShownParameters(step)) {
        keys.push_back(parameter.name + "=");
        values += Case(step.name + " " + parameter.name, ValuesOf(parameter));
    }
    return Case(step.name + ":", keys) + values;
}

} // namespace

std::string BashCompletion(const CLI::App& app)
{
    std::vector<std::string> commands;
    std::string cases = CommandCases(app);
    for (const CLI::App* command : CommandsOf(app)) {
        commands.push_back(command->get_name());
        cases += CommandCases(*command);
    }
    std::vector<std::string> steps;
    for (const Operation& operation : catalogue::Operations()) {
        if (operation.IsStep()) {
            steps.push_back(operation.name);
            cases += StepCases(operation);
        }
    }
    cases += Case("commands", commands) + Case("help help", commands) + Case("steps", steps) + Case("ops ops", steps) +
             Case("recipes recipes", catalogue::NamesOfRecipes());
    return "# Completion of `corvane` for bash, made by `corvane ops --as bash`.\n_corvane_words() {\n    case $1 "
           "in\n" +
           cases + "    esac\n}\n" + kScript;
}

} // namespace corvane::cli
