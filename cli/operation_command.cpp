#include "cli/operation_command.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/placement.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

using catalogue::Kind;
using catalogue::Operation;
using catalogue::Parameter;

struct OperationWords {
    const Operation* operation = nullptr;
    std::vector<std::string> files; ///< one for each input
    catalogue::Settings settings;
    Output output;
    bool json = false;
    PrintTable print; ///< empty for an operation that makes an image
};

std::string TypeName(const Parameter& parameter)
{
    switch (parameter.kind) {
    case Kind::Number:
    case Kind::Whole:
        return "N";
    case Kind::Choice:
        return "WORD";
    case Kind::Rectangle:
        return "LEFT:TOP:RIGHT:BOTTOM";
    case Kind::Numbers: {
        std::string forms;
        for (const std::string& form : parameter.choices) {
            forms += (forms.empty() ? "" : "|") + form;
        }
        return forms;
    }
    case Kind::Image:
    case Kind::CurveFile:
        return "FILE";
    case Kind::Flag:
    case Kind::Text:
    case Kind::Curve:
        break;
    }
    return "TEXT";
}

/// "--name,--alias"
std::string OptionNames(const Parameter& parameter)
{
    std::string names = "--" + parameter.name;
    for (const std::string& alias : parameter.aliases) {
        names += ",--" + alias;
    }
    return names;
}

std::string Sentence(std::string words)
{
    words[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(words[0])));
    return words;
}

std::string Capitals(std::string word)
{
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return word;
}

void AddFiles(CLI::App& command, OperationWords& words)
{
    const Operation& operation = *words.operation;
    if (words.print) {
        command.add_flag("--json", words.json, "Print JSON");
    } else {
        const bool hasScale = catalogue::FindNamed(operation.parameters, "scale") != nullptr;
        AddOutput(command, words.output, "The image to write: .fits, .tif or .png");
        AddSaveOptions(command, words.output.save, hasScale ? kLongScaleName : kScaleNames);
    }
    words.files.resize(operation.inputs.size());
    for (std::size_t i = 0; i < operation.inputs.size(); ++i) {
        const catalogue::Input& input = operation.inputs[i];
        command.add_option(Capitals(input.name), words.files[i], Sentence(input.summary))->required()->type_name("");
    }
}

/// An error of work on files: of the file in place of the input, with parameters as options.
Error OnFiles(const Error& error, const OperationWords& words)
{
    const std::vector<catalogue::Input>& inputs = words.operation->inputs;
    if (error.Is(Error::Kind::kInput)) {
        const auto names = catalogue::Names(inputs);
        return FileError(words.files[static_cast<std::size_t>(catalogue::PlaceOf(error.Subject(), names))],
                         error.Reason());
    }
    return OfFile(words.files[0], error);
}

catalogue::Inputs Load(const OperationWords& words)
{
    catalogue::Inputs inputs;
    for (std::size_t i = 0; i < words.files.size(); ++i) {
        inputs[words.operation->inputs[i].name].push_back(io::Load(words.files[i]));
        ThrowIfCancelled();
    }
    return inputs;
}

catalogue::Outputs Work(const OperationWords& words, const catalogue::Arguments& arguments, const Session& session)
{
    catalogue::Inputs inputs = Load(words);
    try {
        return catalogue::RunOperation(*words.operation, std::move(inputs), arguments, RunOf(session));
    } catch (const Error& error) {
        throw OnFiles(error, words);
    } catch (const CMemoryException&) {
        throw FileError(words.files[0], kMemoryText);
    }
}

/// Says where stars brought the frames: the second of two, or each by its name.
void SayFits(const OperationWords& words, const catalogue::Outputs& outputs)
{
    for (const auto& [name, output] : outputs) {
        const auto* table = std::get_if<catalogue::Table>(&output);
        const std::vector<catalogue::Fit> fits = table == nullptr ? std::vector<catalogue::Fit>() : FitsOf(*table);
        for (std::size_t i = 0; i < fits.size(); ++i) {
            if (fits[i].stars > 0) {
                std::cout << (fits.size() == 1 ? "" : words.files[i] + ": ") << catalogue::ToText(fits[i]) << "\n";
            }
        }
    }
}

int Perform(const OperationWords& words, const Session& session)
{
    const catalogue::Arguments arguments = catalogue::MakeArguments(*words.operation, words.settings);
    if (!words.print) {
        std::vector<std::string> files = catalogue::FilesOf(arguments);
        files.insert(files.end(), words.files.begin(), words.files.end());
        io::CheckSave(words.output.path, words.output.save);
        CheckOutputs(words.output, files);
    }
    catalogue::CheckFiles(arguments);
    const catalogue::Outputs outputs = Work(words, arguments, session);
    ThrowIfCancelled();
    const auto& first = outputs.find(words.operation->outputs.front().name)->second;
    if (words.print) {
        words.print(std::get<catalogue::Table>(first), words.json);
        return kDone;
    }
    const auto& frame = std::get<io::Frame>(first);
    io::Save(words.output.path, frame.image, frame.header, words.output.save);
    if (!session.quiet) {
        SayFits(words, outputs);
    }
    return kDone;
}

} // namespace

void AddParameters(CLI::App& command, const Operation& operation, catalogue::Settings& settings)
{
    for (const Parameter& parameter : operation.parameters) {
        const std::string names = OptionNames(parameter);
        const bool isFlag = parameter.kind == Kind::Flag;
        const std::string help = Sentence(isFlag ? parameter.summary : catalogue::DescriptionOf(parameter));
        if (isFlag) {
            command.add_flag_callback(
                names,
                [&settings, name = parameter.name] {
                    settings.push_back({name, true});
                },
                help);
        } else {
            command
                .add_option_function<std::string>(
                    names,
                    [&settings, name = parameter.name](const std::string& text) {
                        settings.push_back({name, text});
                    },
                    help)
                ->type_name(TypeName(parameter));
        }
    }
}

void AddOperation(CLI::App& app, Session& session, const char* name, const PrintTable& print)
{
    const Operation& operation = catalogue::FindOperation(name);
    CLI::App& command = *app.add_subcommand(operation.name, Sentence(operation.summary));
    auto words = std::make_shared<OperationWords>();
    words->operation = &operation;
    words->print = print;
    AddCommonOptions(command, session);
    AddFiles(command, *words);
    AddParameters(command, operation, words->settings);
    command.footer(operation.help);
    command.callback([&session, words] { session.work = [&session, words] { return Perform(*words, session); }; });
}

} // namespace corvane::cli
