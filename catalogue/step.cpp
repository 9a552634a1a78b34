#include "catalogue/step.h"

#include <map>
#include <optional>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/points.h"
#include "corvane/core/error.h"
#include "io/reader.h"

namespace corvane::catalogue {
namespace {

using Texts = std::map<const Parameter*, std::string>;

constexpr char kComma = ',';

// Takes the text up to the next single comma away from `rest`; empty at the end. A double comma stands for one.
std::optional<std::string> TakeItem(std::optional<std::string_view>& rest)
{
    if (!rest) {
        return std::nullopt;
    }
    std::string item;
    for (std::size_t i = 0; i < rest->size(); ++i) {
        const char letter = (*rest)[i];
        if (letter == kComma && rest->substr(i + 1, 1) != ",") {
            rest->remove_prefix(i + 1);
            return item;
        }
        i += letter == kComma ? 1 : 0;
        item += letter;
    }
    rest.reset();
    return item;
}

const Parameter& FindParameter(const Operation& operation, std::string_view name)
{
    const Parameter* parameter = FindNamed(operation.parameters, name);
    if (parameter == nullptr) {
        const std::vector<std::string> names = Names(operation.parameters);
        const std::string suggestion = Suggestion(name, names);
        throw ParameterError("unknown parameter '" + std::string(name) + "'" +
                             (!suggestion.empty() ? suggestion
                              : names.empty()     ? "; it takes none"
                                                  : "; it takes " + Joined(names)));
    }
    return *parameter;
}

Texts ReadTexts(const Operation& operation, std::optional<std::string_view> rest)
{
    Texts texts;
    while (const std::optional<std::string> item = TakeItem(rest)) {
        const std::size_t equals = item->find('=');
        if (equals == std::string::npos) {
            throw ParameterError("'" + *item +
                                 "' is not of the form key=value; a comma within a value is written twice");
        }
        const Parameter& parameter = FindParameter(operation, std::string_view(*item).substr(0, equals));
        if (!texts.emplace(&parameter, item->substr(equals + 1)).second) {
            throw ParameterError(parameter.name + " is given twice");
        }
    }
    return texts;
}

void AddArgument(const Parameter& parameter, const Texts& texts, Arguments& arguments)
{
    if (const auto given = texts.find(&parameter); given != texts.end()) {
        arguments.Add({&parameter, ParseValue(parameter, given->second), true});
    } else if (parameter.IsRequired()) {
        throw ParameterError(parameter.name + " must be given: " + AllowedText(parameter));
    } else if (std::optional<Value> value = DefaultValue(parameter)) {
        arguments.Add({&parameter, std::move(*value), parameter.readSetting != nullptr});
    }
}

void CheckPlanes(const Operation& operation, const CStlImage& image)
{
    const bool isColour = image.IsColor() != 0;
    if (operation.planes == Planes::Any || isColour == (operation.planes == Planes::Colour)) {
        return;
    }
    const std::string wanted = isColour ? "an image of 1 plane" : "a colour image of 3 planes";
    throw ParameterError("takes " + wanted + "; this one has " + std::to_string(image.GetPlanes()));
}

void CheckRectangle(const Argument& argument, const CStlImage& image)
{
    const CRect* rect = std::get_if<CRect>(&argument.value);
    if (rect == nullptr) {
        return;
    }
    const CRect whole(0, 0, image.GetWidth(), image.GetHeight());
    if (rect->left < 0 || rect->top < 0 || rect->right > whole.right || rect->bottom > whole.bottom) {
        throw ParameterError(argument.parameter->name + " = " + ToText(argument.value) +
                             ": must lie within the image, " + ToText(Value(whole)));
    }
}

// Errors are thrown without the operation's name, which is put before them here.
template <typename Work>
void InTheNameOf(const Operation& operation, const Work& work)
{
    try {
        work();
    } catch (const Error& error) {
        throw error.What() == Error::Kind::kFile ? error : error.Of(operation.name);
    }
}

std::string WithDoubledCommas(const std::string& value)
{
    std::string text;
    for (const char letter : value) {
        text.append(letter == kComma ? 2 : 1, letter);
    }
    return text;
}

} // namespace

Step ParseStep(std::string_view text)
{
    const std::size_t colon = text.find(':');
    Step step{&FindOperation(text.substr(0, colon)), {}};
    InTheNameOf(*step.operation, [&] {
        const Texts texts = ReadTexts(
            *step.operation, colon == std::string_view::npos ? std::nullopt : std::optional(text.substr(colon + 1)));
        for (const Parameter& parameter : step.operation->parameters) {
            AddArgument(parameter, texts, step.arguments);
        }
        if (step.operation->check) {
            step.operation->check(step.arguments);
        }
    });
    return step;
}

std::string ToText(const Step& step)
{
    std::string text = step.operation->name;
    char separator = ':';
    for (const Argument& argument : step.arguments.List()) {
        if (argument.isWritten) {
            text += separator + argument.parameter->name + "=" + WithDoubledCommas(ToText(argument.value));
            separator = kComma;
        }
    }
    return text;
}

std::vector<std::string> FilesOf(const Step& step)
{
    std::vector<std::string> files;
    for (const Argument& argument : step.arguments.List()) {
        if (argument.parameter->kind == Kind::File || argument.parameter->kind == Kind::CurveFile) {
            files.push_back(std::get<std::string>(argument.value));
        }
    }
    return files;
}

void CheckFiles(const Step& step)
{
    for (const Argument& argument : step.arguments.List()) {
        if (argument.parameter->kind == Kind::File) {
            io::OpenFrame(std::get<std::string>(argument.value));
        } else if (argument.parameter->kind == Kind::CurveFile) {
            ReadPoints(std::get<std::string>(argument.value));
        }
    }
}

void Run(const Step& step, io::Frame& frame, const Context& context)
{
    InTheNameOf(*step.operation, [&] {
        CheckPlanes(*step.operation, frame.image);
        for (const Argument& argument : step.arguments.List()) {
            CheckRectangle(argument, frame.image);
        }
        Arguments arguments = step.arguments;
        step.operation->run(frame, arguments, context);
    });
    frame.header.AddHistory("corvane apply " + ToText(step));
}

} // namespace corvane::catalogue
