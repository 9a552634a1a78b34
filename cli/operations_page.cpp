#include <optional>

#include "catalogue/mask.h"
#include "cli/all_operations.h"
#include "cli/documents.h"
#include "cli/operation_command.h"

namespace corvane::cli {
namespace {

using catalogue::Operation;
using catalogue::Parameter;

constexpr const char* kHead =
    "# Reference of the operations\n\n"
    "A step is written `name:key=value,key=value` and done by `corvane apply`; what works on several images or "
    "measures is a command of its own, whose parameters are options: `--key value`. `corvane::Apply` runs both, but "
    "for `stack` and `register`. What a step looks at to make a sample tells whether an image may be worked on in "
    "parts. This page is made by `corvane ops --as markdown`.\n";

constexpr const char* kMixHead =
    "Steps that change samples and leave them in their places also take these two; they are marked *mask* below. One "
    "that has a `strength` of its own, where 0 changes nothing as well, keeps that.\n";

/// Text in which nothing stands for more than itself.
std::string Plain(const std::string& text)
{
    std::string plain;
    for (const char letter : text) {
        const bool isMark = letter == '*' || letter == '|' || letter == '<';
        plain.append(isMark ? "\\" : "").append(1, letter);
    }
    return plain;
}

/// "`name`, `other`"
std::string Listed(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "`" : ", `") + name + "`";
    }
    return text;
}

std::string DefaultText(const Parameter& parameter)
{
    const std::optional<catalogue::Value> value = catalogue::DefaultValue(parameter);
    return parameter.IsRequired()             ? "must be given"
           : !value                           ? parameter.whenAbsent
           : parameter.readSetting != nullptr ? ToText(*value) + ", or the user's setting"
                                              : ToText(*value);
}

std::string Row(const Parameter& parameter)
{
    std::vector<std::string> names = parameter.aliases;
    names.insert(names.begin(), parameter.name);
    return "| " + Listed(names) + " | " + Plain(parameter.summary) + " | " + WordFor(parameter.kind) + " | " +
           parameter.unit + " | " + Plain(AllowedText(parameter)) + " | " + Plain(DefaultText(parameter)) + " |\n";
}

std::string ParametersText(const std::vector<Parameter>& parameters)
{
    std::string text;
    for (const Parameter& parameter : parameters) {
        text += text.empty()
                    ? "\n| parameter | what it is | kind | unit | allowed | default |\n|---|---|---|---|---|---|\n"
                    : "";
        text += Row(parameter);
    }
    return text;
}

std::string InputsText(const Operation& operation)
{
    if (operation.IsStep()) {
        return std::string("Takes ") + WordFor(operation.inputs.front().planes) +
               (catalogue::TakesMask(operation) ? "; [mask](#masks-and-strength)" : "") +
               ". Looks at: " + ToText(UsualFootprint(operation)) + ".\n";
    }
    std::string text = "Takes:\n\n";
    for (const catalogue::Input& input : operation.inputs) {
        text += "- `" + input.name + "` (" + WordFor(input.count) + ", " + WordFor(input.planes) +
                "): " + input.summary + "\n";
    }
    return text;
}

std::string OutputsText(const Operation& operation)
{
    std::string text;
    for (const catalogue::Output& output : operation.outputs) {
        text += "- `" + output.name + "` (" + WordFor(output.kind) + "): " + output.summary + "\n";
    }
    return operation.IsStep() ? "" : "\nMakes:\n\n" + text;
}

std::string Section(const Operation& operation)
{
    return "\n### " + operation.name + "\n\n**" + Plain(Sentence(operation.summary)) + ".** " + Plain(operation.help) +
           "\n\n" + (operation.aliases.empty() ? "" : "Also called " + Listed(operation.aliases) + ". ") +
           InputsText(operation) + OutputsText(operation) + ParametersText(OwnParameters(operation));
}

} // namespace

std::string OperationsPage()
{
    std::string page = std::string(kHead) + "\n## Masks and strength\n\n" + kMixHead +
                       ParametersText(catalogue::MixParameters()) + "\n" + Plain(catalogue::kMixHelp) + "\n";
    std::string title;
    for (const catalogue::Group& group : AllGroups()) {
        if (group.title != title) {
            title = group.title;
            page += "\n## " + title + "\n";
        }
        for (const Operation& operation : OperationsOf(group)) {
            page += Section(operation);
        }
    }
    return page;
}

} // namespace corvane::cli
