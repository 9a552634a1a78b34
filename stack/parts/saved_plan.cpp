#include "stack/parts/saved_plan.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "corvane/core/error.h"
#include "io/input_file.h"
#include "stack/digest.h"
#include "stack/parts/light_json.h"
#include "stack/parts/option_fields.h"

namespace corvane::stack {

namespace {

constexpr const char* kVersionField = "corvane";

std::string VersionedText(const char* kind, Json content)
{
    const Json json{{kVersionField, CORVANE_VERSION}, {kind, std::move(content)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// What read(content) makes of a text of that kind.
template <class Read>
auto FromText(const std::string& text, const std::string& name, const char* kind, Read read)
{
    try {
        const Json json = Json::parse(text);
        const auto version = json.at(kVersionField).get<std::string>();
        if (version != CORVANE_VERSION) {
            throw FileError(name, "was made by version " + version + "; this is " CORVANE_VERSION);
        }
        return read(json.at(kind));
    } catch (const nlohmann::json::exception&) {
        throw FileError(name, std::string("is no ") + kind + " of a stack, or damaged");
    } catch (const WrongValue& wrong) {
        throw FileError(name, std::string("is a damaged ") + kind + " of a stack: " + wrong.what());
    }
}

SavedPlan PlanOfJson(const Json& json)
{
    SavedPlan plan;
    FromJson(json.at("options"), plan.options);
    for (const Json& light : json.at("lights")) {
        plan.lights.push_back(LightOf(light));
    }
    FromJson(json.at("reference_light"), plan.referenceLight);
    FromJson(json.at("reference"), plan.reference);
    FromJson(json.at("notes"), plan.notes);
    if (plan.lights.size() != plan.options.lights.size()) {
        throw WrongValue("its lights are others than those of the options");
    }
    const bool isLight = plan.referenceLight >= 0 && plan.referenceLight < std::ssize(plan.lights);
    if (!isLight) {
        throw WrongValue("its reference is no light");
    }
    return plan;
}

} // namespace

std::string ToText(const Options& options)
{
    return VersionedText("options", JsonOf(options));
}

Options OptionsOfText(const std::string& text, const std::string& name)
{
    return FromText(text, name, "options", [](const Json& json) {
        Options options;
        FromJson(json, options);
        return options;
    });
}

std::string ToText(const LightRecord& light)
{
    return VersionedText("light", ToJson(light));
}

LightRecord LightOfText(const std::string& text, const std::string& name)
{
    return FromText(text, name, "light", LightOf);
}

std::string ToText(const SavedPlan& plan)
{
    Json lights = Json::array();
    for (const LightRecord& light : plan.lights) {
        lights.push_back(ToJson(light));
    }
    return VersionedText("plan", {{"options", JsonOf(plan.options)},
                                  {"reference_light", plan.referenceLight},
                                  {"reference", JsonOf(plan.reference)},
                                  {"notes", plan.notes},
                                  {"lights", std::move(lights)}});
}

SavedPlan PlanOfText(const std::string& text, const std::string& name)
{
    SavedPlan plan = FromText(text, name, "plan", PlanOfJson);
    plan.key = DigestOf(text);
    return plan;
}

std::string ReadSaved(const std::string& path)
{
    io::CheckOrdinaryFile(path);
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file) {
        throw FileError(path, "cannot be read");
    }
    return text;
}

} // namespace corvane::stack
