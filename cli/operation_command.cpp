#include "cli/operation_command.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/names.h"
#include "catalogue/placement.h"
#include "cli/all_operations.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "corvane/core/ascii.h"
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
    catalogue::Files files;
    catalogue::Settings settings;
    Output output;
    bool json = false;
    PrintTable print; ///< empty for an operation that makes nothing but an image

    bool MakesImage() const { return operation->outputs.front().kind == catalogue::OutputKind::Image; }
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
    case Kind::Matrix:
    case Kind::Output:
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

void AddOutputs(CLI::App& command, OperationWords& words)
{
    if (words.print) {
        command.add_flag("--json", words.json, "Print JSON");
    }
    if (!words.MakesImage()) {
        return;
    }
    const bool hasScale = catalogue::FindNamed(words.operation->parameters, "scale") != nullptr;
    AddOutput(command, words.output, "The image to write: .fits, .tif or .png");
    AddSaveOptions(command, words.output.save, hasScale ? kLongScaleName : kScaleNames);
}

/// Adds the words that stand before the images.
void AddWords(CLI::App& command, const Operation& operation, catalogue::Settings& settings)
{
    for (const Parameter& parameter : operation.parameters) {
        if (parameter.isWord) {
            const auto set = [&settings, name = parameter.name](const std::string& text) {
                settings.push_back({name, text});
            };
            command
                .add_option_function<std::string>(Upper(parameter.name), set,
                                                  Sentence(catalogue::DescriptionOf(parameter)))
                ->required()
                ->type_name("");
        }
    }
}

/// Those that take several images need one at least.
void RequireInputs(CLI::App& command, const Operation& operation)
{
    for (const catalogue::Input& input : operation.inputs) {
        if (input.count == catalogue::Count::Several) {
            command.get_option(Upper(input.name))->required();
        }
    }
}

catalogue::Inputs Load(const OperationWords& words)
{
    catalogue::Inputs inputs;
    for (const catalogue::Input& input : words.operation->inputs) {
        for (const std::string& file : words.files.find(input.name)->second) {
            inputs[input.name].push_back(io::Load(file));
            ThrowIfCancelled();
        }
    }
    return inputs;
}

catalogue::Outputs Work(const OperationWords& words, const catalogue::Arguments& arguments, const Session& session)
{
    catalogue::Inputs inputs = Load(words);
    try {
        return catalogue::RunOperation(*words.operation, std::move(inputs), arguments, RunOf(session));
    } catch (const Error& error) {
        throw OnFiles(error, *words.operation, words.files);
    } catch (const CMemoryException&) {
        throw FileError(FilesOf(words.files, *words.operation).front(), kMemoryText);
    }
}

/// Says where stars brought the frames: the second of two, or each by its name.
void SayFits(const OperationWords& words, const catalogue::Outputs& outputs)
{
    const std::vector<std::string> files = FilesOf(words.files, *words.operation);
    for (const auto& [name, output] : outputs) {
        const auto* table = std::get_if<catalogue::Table>(&output);
        const std::vector<catalogue::Fit> fits = table == nullptr ? std::vector<catalogue::Fit>() : FitsOf(*table);
        for (std::size_t i = 0; i < fits.size(); ++i) {
            if (fits[i].stars > 0) {
                std::cout << (fits.size() == 1 ? "" : files[i] + ": ") << catalogue::ToText(fits[i]) << "\n";
            }
        }
    }
}

/// The first table of those that were made.
const catalogue::Table& TableOf(const OperationWords& words, const catalogue::Outputs& outputs)
{
    const auto& all = words.operation->outputs;
    const auto isTable = [](const catalogue::Output& output) { return output.kind != catalogue::OutputKind::Image; };
    return std::get<catalogue::Table>(outputs.find(std::find_if(all.begin(), all.end(), isTable)->name)->second);
}

int Perform(const OperationWords& words, const Session& session)
{
    const catalogue::Arguments arguments = catalogue::MakeArguments(*words.operation, words.settings);
    if (words.MakesImage()) {
        std::vector<std::string> files = FilesOf(words.files, *words.operation);
        const std::vector<std::string> others = catalogue::FilesOf(arguments);
        files.insert(files.end(), others.begin(), others.end());
        io::CheckSave(words.output.path, words.output.save);
        CheckOutputs(words.output, files);
    }
    catalogue::CheckFiles(arguments);
    const catalogue::Outputs outputs = Work(words, arguments, session);
    ThrowIfCancelled();
    if (words.MakesImage()) {
        const auto& frame = std::get<io::Frame>(outputs.find(words.operation->outputs.front().name)->second);
        io::Save(words.output.path, frame.image, frame.header, words.output.save);
    }
    if (words.print && (!session.quiet || words.json || !words.MakesImage())) {
        words.print(TableOf(words, outputs), words.json);
    } else if (!words.print && !session.quiet) {
        SayFits(words, outputs);
    }
    return kDone;
}

} // namespace

std::string Sentence(std::string words)
{
    words[0] = Upper(words[0]);
    return words;
}

void AddInputs(CLI::App& command, const Operation& operation, catalogue::Files& files)
{
    for (const catalogue::Input& input : operation.inputs) {
        const std::string help = Sentence(input.summary);
        std::vector<std::string>& of = files[input.name];
        if (input.count == catalogue::Count::One) {
            of.resize(1);
            command.add_option(Upper(input.name), of.front(), help)->required()->type_name("");
        } else if (input.count == catalogue::Count::Several) {
            command.add_option(Upper(input.name), of, help)->type_name("");
        } else {
            command.add_option("--" + input.name, of, help)->type_name("FILE");
        }
    }
}

std::vector<std::string> FilesOf(const catalogue::Files& files, const Operation& operation)
{
    std::vector<std::string> all;
    for (const catalogue::Input& input : operation.inputs) {
        const std::vector<std::string>& of = files.find(input.name)->second;
        all.insert(all.end(), of.begin(), of.end());
    }
    return all;
}

Error OnFiles(const Error& error, const Operation& operation, const catalogue::Files& files)
{
    const bool isOfInput = error.Is(Error::Kind::kInput);
    const std::string& input = isOfInput ? error.Subject() : operation.inputs.front().name;
    const std::string& file = files.find(input)->second.front();
    return isOfInput ? FileError(file, error.Reason()) : OfFile(file, error);
}

void AddParameters(CLI::App& command, const Operation& operation, catalogue::Settings& settings)
{
    for (const Parameter& parameter : operation.parameters) {
        if (parameter.isWord) {
            continue;
        }
        const std::string names = OptionNames(parameter);
        const std::string help = Sentence(catalogue::DescriptionOf(parameter));
        const auto set = [&settings, name = parameter.name](const std::string& text) {
            settings.push_back({name, text});
        };
        if (parameter.kind == Kind::Flag) {
            command.add_flag_callback(
                names, [set] { set("yes"); }, Sentence(parameter.summary));
        } else if (parameter.IsList()) {
            command
                .add_option_function<std::vector<std::string>>(
                    names, [set](const std::vector<std::string>& texts) { set(CLI::detail::join(texts, ",")); }, help)
                ->type_name("X,Y");
        } else {
            command.add_option_function<std::string>(names, set, help)->type_name(TypeName(parameter));
        }
    }
}

CLI::App& AddCommand(CLI::App& app, Session& session, const Operation& operation)
{
    CLI::App& command = *app.add_subcommand(operation.name, Sentence(operation.summary));
    AddCommonOptions(command, session);
    command.footer(operation.help);
    return command;
}

void AddOperation(CLI::App& app, Session& session, const char* name, const PrintTable& print)
{
    auto words = std::make_shared<OperationWords>();
    words->operation = &OperationCalled(name);
    words->print = print;
    CLI::App& command = AddCommand(app, session, *words->operation);
    AddOutputs(command, *words);
    AddWords(command, *words->operation, words->settings);
    AddInputs(command, *words->operation, words->files);
    RequireInputs(command, *words->operation);
    AddParameters(command, *words->operation, words->settings);
    command.callback([&session, words] { session.work = [&session, words] { return Perform(*words, session); }; });
}

} // namespace corvane::cli
