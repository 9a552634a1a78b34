#include "cli/apply_words.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "cli/file_set.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "corvane/core/error.h"
#include "io/input_file.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNamePlace = "{name}";

bool IsFile(const std::string& word)
{
    std::error_code error;
    return word == kStandardStream || fs::exists(io::SplitChoice(word).file, error);
}

bool NamesStep(const std::string& word)
{
    return catalogue::FindNamed(catalogue::Operations(), word.substr(0, word.find(':'))) != nullptr;
}

/// What is wrong with a word that names neither a step nor a file. With values it is meant as a step.
[[noreturn]] void RefuseUnknown(const std::string& word)
{
    const std::string name = word.substr(0, word.find(':'));
    const bool hasValues = word.find('=', name.size()) != std::string::npos;
    const std::string near = catalogue::Suggestion(name, catalogue::Names(catalogue::Operations()));
    throw UsageError((hasValues ? "unknown step '" + name + "'" : "'" + word + "' is neither a step nor a file") +
                     (near.empty() ? "; `corvane ops` lists the steps" : near));
}

bool IsInput(const std::string& word, bool isAfterStep)
{
    if (NamesStep(word)) {
        if (!isAfterStep && IsFile(word)) {
            throw UsageError("'" + word + "' is a step and a file: write ./" + word + " for the file, or put it first");
        }
        return false;
    }
    if (!IsFile(word)) {
        RefuseUnknown(word);
    }
    if (isAfterStep) {
        throw UsageError("'" + word + "' is no step but a file: images come before the steps");
    }
    return true;
}

std::string NameOfInput(const std::string& input)
{
    return input == kStandardStream ? "stdin" : io::StemOf(input);
}

/// The name that an output pattern makes of an input.
std::string Filled(std::string pattern, const std::string& input)
{
    const std::string name = NameOfInput(input);
    for (std::size_t at = 0; (at = pattern.find(kNamePlace, at)) != std::string::npos; at += name.size()) {
        pattern.replace(at, std::string_view(kNamePlace).size(), name);
    }
    return pattern;
}

} // namespace

ApplyWords ToldApart(const std::string& first, const std::vector<std::string>& words)
{
    if (NamesStep(first) && !IsFile(first)) {
        throw UsageError("no image is given: '" + first + "' is a step, and there is no file of that name");
    }
    ApplyWords told{{first}, {}};
    for (const std::string& word : words) {
        (IsInput(word, !told.steps.empty()) ? told.inputs : told.steps).push_back(word);
    }
    return told;
}

std::vector<std::string> OutputsFor(const std::vector<std::string>& inputs, const std::string& output)
{
    std::error_code error;
    const bool isFolder = output.ends_with('/') || fs::is_directory(output, error);
    const std::string pattern = isFolder ? (fs::path(output) / kNamePlace).string() + ".fits" : output;
    if (inputs.size() > 1 && pattern.find(kNamePlace) == std::string::npos) {
        throw UsageError("several images need a folder for OUT, as results/, or a name as '{name}_new.fits'");
    }
    std::vector<std::string> outputs;
    FileSet seen;
    for (const std::string& input : inputs) {
        outputs.push_back(Filled(pattern, input));
        if (seen.Has(outputs.back())) {
            throw NameError(outputs.back(), "would be written for two images of one name");
        }
        seen.Add(outputs.back());
    }
    return outputs;
}

} // namespace corvane::cli
