#include "catalogue/step.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

#include "catalogue/mask.h"
#include "catalogue/mix_matrix.h"
#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/points.h"
#include "corvane/core/error.h"
#include "corvane/core/mix.h"
#include "io/reader.h"

namespace corvane::catalogue {
namespace {

constexpr char kComma = ',';

/// The items of a text, between single commas; a double comma stands for one.
std::vector<std::string> Items(std::string_view text)
{
    std::vector<std::string> items(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != kComma) {
            items.back() += text[i];
        } else if (text.substr(i + 1, 1) == ",") {
            items.back() += text[i++];
        } else {
            items.emplace_back();
        }
    }
    return items;
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

const Operation& FindStep(std::string_view name)
{
    const Operation& operation = FindOperation(name);
    if (!operation.IsStep()) {
        const bool makesImage = operation.outputs.front().kind == OutputKind::Image;
        throw ParameterError("'" + operation.name + "' is no step: it " +
                             (makesImage ? "works on several images" : "makes no image"));
    }
    return operation;
}

/// The values of a step's text, as texts.
Settings ReadSettings(std::string_view text)
{
    Settings settings;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return settings;
    }
    for (const std::string& item : Items(text.substr(colon + 1))) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos) {
            throw ParameterError("'" + item +
                                 "' is not of the form key=value; a comma within a value is written twice");
        }
        settings.push_back({item.substr(0, equals), item.substr(equals + 1)});
    }
    return settings;
}

using Given = std::map<const Parameter*, Value>;

Given Judged(const Operation& operation, const Settings& settings)
{
    Given given;
    for (const Setting& setting : settings) {
        const Parameter& parameter = FindParameter(operation, setting.name);
        if (!given.emplace(&parameter, setting.value).second) {
            throw ParameterError(parameter.name, {}, "is given twice");
        }
    }
    return given;
}

void AddArgument(const Parameter& parameter, const Given& given, Arguments& arguments)
{
    if (const auto found = given.find(&parameter); found != given.end()) {
        arguments.Add({&parameter, CheckedValue(parameter, found->second), true});
    } else if (parameter.IsRequired()) {
        throw ParameterError(parameter.name, {}, "must be given; it is " + AllowedText(parameter));
    } else if (std::optional<Value> value = DefaultValue(parameter)) {
        arguments.Add({&parameter, std::move(*value), parameter.readSetting != nullptr});
    }
}

bool MayBeMany(const Input& input)
{
    return input.count == Count::Several || input.count == Count::Any;
}

void CheckFrame(const Input& input, const io::Frame& frame)
{
    const bool isColour = frame.image.IsColor() != 0;
    if (input.planes != Planes::Any && isColour != (input.planes == Planes::Colour)) {
        const std::string reason = std::string("must have ") + (isColour ? "1 plane" : "3 planes") + "; it has " +
                                   std::to_string(frame.image.GetPlanes());
        throw MayBeMany(input) ? FileError(frame.image.GetOrgFileName(), reason) : InputError(input.name, reason);
    }
}

void CheckInputs(const Operation& operation, const Inputs& inputs)
{
    for (const Input& input : operation.inputs) {
        const auto found = inputs.find(input.name);
        const std::size_t given = found == inputs.end() ? 0 : found->second.size();
        const bool mayBeNone = input.count == Count::Optional || input.count == Count::Any;
        if ((given == 0 && !mayBeNone) || (given > 1 && !MayBeMany(input))) {
            throw InputError(input.name, given == 0 ? "is missing" : "must be one image");
        }
        for (std::size_t i = 0; i < given; ++i) {
            CheckFrame(input, found->second[i]);
        }
    }
}

void CheckRectangles(const Arguments& arguments, const CStlImage& image)
{
    const CRect whole(0, 0, image.GetWidth(), image.GetHeight());
    for (const Argument& argument : arguments.List()) {
        const CRect* rect = std::get_if<CRect>(&argument.value);
        if (rect != nullptr &&
            (rect->left < 0 || rect->top < 0 || rect->right > whole.right || rect->bottom > whole.bottom)) {
            throw ParameterError(argument.parameter->name, ToText(argument.value),
                                 "must lie within the image, " + ToText(Value(whole)));
        }
    }
}

// Errors are thrown without the operation's name, which is put before them here.
template <typename Work>
void InTheNameOf(const Operation& operation, const Work& work)
{
    try {
        work();
    } catch (const Error& error) {
        throw error.Is(Error::Kind::kFile) ? error : error.Of(operation.name);
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

/// Does a step's work on a frame that fits, or as much of it as mask and strength say.
void Work(const Operation& operation, io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const std::optional<ChangePart> part = PartFor(frame, arguments, run);
    const auto takePart = [&](CStlImage& result, const CStlImage& before) {
        if (part) {
            MixImages(result, before, part->mask ? &*part->mask : nullptr, part->strength, run);
        }
    };
    if (const OnImage* onImage = std::get_if<OnImage>(&operation.run)) {
        CStlImage result = (*onImage)(frame.image, arguments, run);
        takePart(result, frame.image);
        frame.image = std::move(result);
        return;
    }
    const CStlImage before = part ? CStlImage(frame.image) : CStlImage();
    std::get<OnFrame>(operation.run)(frame, arguments, run);
    takePart(frame.image, before);
}

std::string StepText(const Operation& operation, const Arguments& arguments)
{
    std::string text = operation.name;
    char separator = ':';
    for (const Argument& argument : arguments.List()) {
        if (argument.isWritten) {
            text += separator + argument.parameter->name + "=" + WithDoubledCommas(ToText(argument.value));
            separator = kComma;
        }
    }
    return text;
}

/// The command line that does the same.
std::string CommandText(const Operation& operation, const Inputs& inputs, const Arguments& arguments)
{
    std::string text = "corvane " + operation.name;
    for (const Argument& argument : arguments.List()) {
        text += argument.parameter->isWord ? " " + ToText(argument.value) : "";
    }
    for (const Input& input : operation.inputs) {
        const auto found = inputs.find(input.name);
        for (std::size_t i = 0; found != inputs.end() && i < found->second.size(); ++i) {
            text.append(" ").append(found->second[i].image.GetOrgFileName());
        }
    }
    for (const Argument& argument : arguments.List()) {
        const bool isFlag = argument.parameter->kind == Kind::Flag;
        if (argument.isWritten && !argument.parameter->isWord && (!isFlag || std::get<bool>(argument.value))) {
            text += " --" + argument.parameter->name + (isFlag ? "" : " " + ToText(argument.value));
        }
    }
    return text;
}

/// True for a word that stands for an image.
bool IsWordOf(const Parameter& parameter, const std::string& text)
{
    return std::find(parameter.choices.begin(), parameter.choices.end(), text) != parameter.choices.end();
}

/// The files that an argument of one of these kinds names; a word that stands for something built in is none.
std::vector<std::string> FilesOfKinds(std::initializer_list<Kind> kinds, const Arguments& arguments)
{
    std::vector<std::string> files;
    for (const Argument& argument : arguments.List()) {
        const auto* file = std::get_if<std::string>(&argument.value);
        const bool isWanted = std::find(kinds.begin(), kinds.end(), argument.parameter->kind) != kinds.end();
        if (file != nullptr && isWanted && !IsWordOf(*argument.parameter, *file)) {
            files.push_back(*file);
        }
    }
    return files;
}

} // namespace

Arguments MakeArguments(const Operation& operation, const Settings& settings)
{
    const Given given = Judged(operation, settings);
    Arguments arguments;
    for (const Parameter& parameter : operation.parameters) {
        AddArgument(parameter, given, arguments);
    }
    if (operation.check) {
        operation.check(arguments);
    }
    return arguments;
}

Step::Step(std::string_view name, const Settings& settings) : operation(&FindStep(name))
{
    InTheNameOf(*operation, [&] { arguments = MakeArguments(*operation, settings); });
}

Step::Step(std::string_view text) : operation(&FindStep(text.substr(0, text.find(':'))))
{
    InTheNameOf(*operation, [&] { arguments = MakeArguments(*operation, ReadSettings(text)); });
}

Step ParseStep(std::string_view text)
{
    return {text};
}

std::string ToText(const Step& step)
{
    return StepText(*step.operation, step.arguments);
}

std::vector<std::string> FilesOf(const Arguments& arguments)
{
    return FilesOfKinds({Kind::Image, Kind::CurveFile, Kind::Matrix}, arguments);
}

std::vector<std::string> WrittenFilesOf(const Arguments& arguments)
{
    return FilesOfKinds({Kind::Output}, arguments);
}

void CheckFiles(const Arguments& arguments)
{
    for (const Argument& argument : arguments.List()) {
        if (argument.parameter->kind == Kind::CurveFile) {
            ReadPoints(std::get<std::string>(argument.value));
        } else if (argument.parameter->kind == Kind::Matrix) {
            ReadMixMatrix(std::get<std::string>(argument.value));
        }
    }
    for (const std::string& file : FilesOfKinds({Kind::Image}, arguments)) {
        io::OpenFrame(file);
    }
    for (const std::string& file : WrittenFilesOf(arguments)) {
        io::CheckSave(file);
    }
}

void DoStep(const Step& step, io::Frame& frame, const Run& run)
{
    InTheNameOf(*step.operation, [&] {
        CheckFrame(step.operation->inputs.front(), frame);
        CheckRectangles(step.arguments, frame.image);
        Work(*step.operation, frame, step.arguments, run);
    });
}

void RunStep(const Step& step, io::Frame& frame, const Run& run)
{
    DoStep(step, frame, run);
    frame.header.AddHistory("corvane apply " + ToText(step));
}

Outputs RunOperation(const Operation& operation, Inputs inputs, const Arguments& arguments, const Run& run)
{
    CheckInputs(operation, inputs);
    io::Frame& first = inputs.find(operation.inputs.front().name)->second.front();
    CheckRectangles(arguments, first.image);
    if (!operation.IsStep()) {
        first.header.AddHistory(CommandText(operation, inputs, arguments));
        return std::get<OnInputs>(operation.run)(inputs, arguments, run);
    }
    Work(operation, first, arguments, run);
    first.header.AddHistory("corvane apply " + StepText(operation, arguments));
    Outputs outputs;
    outputs.emplace(operation.outputs.front().name, std::move(first));
    return outputs;
}

} // namespace corvane::catalogue
