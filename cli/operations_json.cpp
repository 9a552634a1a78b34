#include <optional>

#include "catalogue/names.h"
#include "cli/all_operations.h"
#include "cli/documents.h"
#include "cli/json.h"

namespace corvane::cli {
namespace {

using catalogue::Kind;
using catalogue::Operation;
using catalogue::Parameter;

Json JsonOf(const Parameter& parameter)
{
    Json json = {{"name", parameter.name}, {"kind", WordFor(parameter.kind)}, {"summary", parameter.summary}};
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

Json JsonOf(const catalogue::Input& input)
{
    return {{"name", input.name},
            {"summary", input.summary},
            {"planes", WordFor(input.planes)},
            {"count", WordFor(input.count)}};
}

Json JsonOf(const catalogue::Output& output)
{
    return {{"name", output.name}, {"kind", WordFor(output.kind)}, {"summary", output.summary}};
}

template <class Item>
Json JsonOf(const std::vector<Item>& items)
{
    Json list = Json::array();
    for (const Item& item : items) {
        list.push_back(JsonOf(item));
    }
    return list;
}

/// The title of the group that lists an operation.
std::string GroupOf(const Operation& operation)
{
    for (const catalogue::Group& group : AllGroups()) {
        if (catalogue::FindNamed(group.operations(), operation.name) != nullptr) {
            return group.title;
        }
    }
    return {};
}

Json JsonOf(const Operation& operation)
{
    return {{"name", operation.name},
            {"aliases", operation.aliases},
            {"group", GroupOf(operation)},
            {"summary", operation.summary},
            {"help", operation.help},
            {"step", operation.IsStep()},
            {"inputs", JsonOf(operation.inputs)},
            {"parameters", JsonOf(ShownParameters(operation))},
            {"outputs", JsonOf(operation.outputs)},
            {"looks_at", ToText(UsualFootprint(operation))}};
}

} // namespace

std::string OperationsJson(const std::vector<const Operation*>& operations, bool asList)
{
    Json list = Json::array();
    for (const Operation* operation : operations) {
        list.push_back(JsonOf(*operation));
    }
    return (asList ? list : list.front()).dump(2) + "\n";
}

} // namespace corvane::cli
