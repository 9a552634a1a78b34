#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "catalogue/groups.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "cli/session.h"
#include "cli/terminal.h"

namespace corvane::cli {
namespace {

using catalogue::Kind;
using catalogue::Operation;
using catalogue::Parameter;
using catalogue::Planes;
using Json = nlohmann::ordered_json;

struct OpsOptions {
    std::string name;
    bool json = false;
};

constexpr int kNameColumns = 16;

std::vector<Parameter> ShownParameters(const Operation& operation)
{
    std::vector<Parameter> shown;
    std::copy_if(operation.parameters.begin(), operation.parameters.end(), std::back_inserter(shown),
                 [](const Parameter& parameter) { return parameter.isShown; });
    return shown;
}

void PrintOperation(const Operation& operation, int width)
{
    std::cout << Wrapped(operation.name, operation.summary, kNameColumns, width);
    for (const Parameter& parameter : ShownParameters(operation)) {
        std::cout << Wrapped("    " + parameter.name, catalogue::DescriptionOf(parameter), kNameColumns + 4, width);
    }
}

const char* PlanesText(Planes planes)
{
    switch (planes) {
    case Planes::Mono:
        return "images of one plane";
    case Planes::Colour:
        return "colour images";
    case Planes::Any:
        break;
    }
    return "any image";
}

void PrintHelp(const Operation& operation, int width)
{
    std::cout << "\n" << Wrapped("", operation.help, 0, width);
    if (operation.IsStep()) {
        std::cout << Wrapped("", "Looks at: " + ToText(UsualFootprint(operation)) + ".", 0, width);
        std::cout << "Takes " << PlanesText(operation.inputs.front().planes) << ".";
    } else {
        std::cout << "A command of its own: see `corvane help " << operation.name << "`.";
    }
    for (const std::string& alias : operation.aliases) {
        std::cout << " Also called " << alias << ".";
    }
    std::cout << "\n";
}

const char* KindText(Kind kind)
{
    switch (kind) {
    case Kind::Number:
        return "number";
    case Kind::Whole:
        return "whole";
    case Kind::Choice:
        return "choice";
    case Kind::Flag:
        return "flag";
    case Kind::Numbers:
        return "numbers";
    case Kind::Text:
        return "text";
    case Kind::Image:
        return "image";
    case Kind::CurveFile:
        return "file";
    case Kind::Curve:
        return "curve";
    case Kind::Rectangle:
        break;
    }
    return "rectangle";
}

Json ToJson(const Parameter& parameter)
{
    Json json = {{"name", parameter.name}, {"kind", KindText(parameter.kind)}, {"summary", parameter.summary}};
    if (!parameter.unit.empty()) {
        json["unit"] = parameter.unit;
    }
    if (parameter.kind == Kind::Number || parameter.kind == Kind::Whole || parameter.kind == Kind::Numbers) {
        json["min"] = parameter.min;
        json["max"] = parameter.max;
    }
    if (!parameter.choices.empty()) {
        json[parameter.kind == Kind::Numbers ? "forms" : "choices"] = parameter.choices;
    }
    json["required"] = parameter.IsRequired();
    if (const std::optional<catalogue::Value> value = catalogue::DefaultValue(parameter)) {
        json["default"] = catalogue::ToText(*value);
    } else if (!parameter.whenAbsent.empty()) {
        json["when_absent"] = parameter.whenAbsent;
    }
    if (!parameter.aliases.empty()) {
        json["aliases"] = parameter.aliases;
    }
    return json;
}

const char* CountText(catalogue::Count count)
{
    switch (count) {
    case catalogue::Count::Several:
        return "several";
    case catalogue::Count::Optional:
        return "optional";
    case catalogue::Count::One:
        break;
    }
    return "one";
}

Json ToJson(const catalogue::Input& input)
{
    return {{"name", input.name},
            {"summary", input.summary},
            {"planes", PlanesText(input.planes)},
            {"count", CountText(input.count)}};
}

const char* KindText(catalogue::OutputKind kind)
{
    switch (kind) {
    case catalogue::OutputKind::Image:
        return "image";
    case catalogue::OutputKind::Numbers:
        return "numbers";
    case catalogue::OutputKind::Table:
        return "table";
    case catalogue::OutputKind::Picture:
        return "picture";
    case catalogue::OutputKind::Files:
        break;
    }
    return "files";
}

Json ToJson(const catalogue::Output& output)
{
    return {{"name", output.name}, {"kind", KindText(output.kind)}, {"summary", output.summary}};
}

Json ToJson(const Operation& operation);

template <class Item>
Json ToJson(const std::vector<Item>& items)
{
    Json list = Json::array();
    for (const Item& item : items) {
        list.push_back(ToJson(item));
    }
    return list;
}

/// The title of the group that lists an operation.
std::string GroupOf(const Operation& operation)
{
    for (const catalogue::Group& group : catalogue::Groups()) {
        if (catalogue::FindNamed(group.operations(), operation.name) != nullptr) {
            return group.title;
        }
    }
    return {};
}

Json ToJson(const Operation& operation)
{
    return {{"name", operation.name},
            {"aliases", operation.aliases},
            {"group", GroupOf(operation)},
            {"summary", operation.summary},
            {"help", operation.help},
            {"step", operation.IsStep()},
            {"inputs", ToJson(operation.inputs)},
            {"parameters", ToJson(ShownParameters(operation))},
            {"outputs", ToJson(operation.outputs)},
            {"looks_at", ToText(UsualFootprint(operation))}};
}

void PrintLine(const Operation& operation, int width)
{
    std::cout << Wrapped("  " + operation.name, operation.summary, kNameColumns + 4, width);
}

/// One line for each step, under the titles of the groups.
void PrintAll(int width)
{
    std::string title;
    for (const catalogue::Group& group : catalogue::Groups()) {
        if (group.title != title) {
            std::cout << (title.empty() ? "" : "\n") << group.title << "\n";
            title = group.title;
        }
        for (const Operation& operation : group.operations()) {
            PrintLine(operation, width);
        }
    }
    std::cout << "\n`corvane ops NAME` explains one; NAME may be any word, as blur.\n";
}

void PrintOne(const Operation& operation, int width)
{
    PrintOperation(operation, width);
    PrintHelp(operation, width);
}

/// What a name or another word stands for: one operation, or those that may serve. Throws Error for nothing.
std::vector<const Operation*> Meant(const std::string& word)
{
    if (const Operation* named = catalogue::FindNamed(catalogue::Operations(), word)) {
        return {named};
    }
    std::vector<const Operation*> serving = catalogue::OperationsFor(word);
    return serving.empty() ? std::vector{&catalogue::FindOperation(word)} : serving;
}

void PrintMeant(const std::string& word, int width)
{
    const std::vector<const Operation*> meant = Meant(word);
    if (meant.size() == 1) {
        PrintOne(*meant.front(), width);
        return;
    }
    std::cout << "No step is called " << word << "; these may serve:\n";
    for (const Operation* operation : meant) {
        PrintLine(*operation, width);
    }
}

/// One object for a word that stands for one step, else a list.
void PrintJson(const std::string& word)
{
    Json json = Json::array();
    if (word.empty()) {
        json = ToJson(catalogue::Operations());
    } else {
        for (const Operation* operation : Meant(word)) {
            json.push_back(ToJson(*operation));
        }
    }
    std::cout << (!word.empty() && json.size() == 1 ? json.front() : json).dump(2) << "\n";
}

int Ops(const OpsOptions& options)
{
    const int width = TerminalWidth(STDOUT_FILENO);
    if (options.json) {
        PrintJson(options.name);
    } else if (options.name.empty()) {
        PrintAll(width);
    } else {
        PrintMeant(options.name, width);
    }
    return kDone;
}

} // namespace

void AddOps(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("ops", "List what `apply` can do");
    auto options = std::make_shared<OpsOptions>();
    AddCommonOptions(command, session);
    command
        .add_option("name", options->name,
                    "The step to explain, or a word for what it should do, as blur; else all are listed")
        ->type_name("NAME");
    command.add_flag("--json", options->json, "Print JSON");
    command.callback([&session, options] { session.work = [options] { return Ops(*options); }; });
}

} // namespace corvane::cli
