#include "cli/output.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

#include <CLI/Validators.hpp>

#include "corvane/core/error.h"
#include "io/input_file.h"

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, io::SampleScale> kScales{{"levels", io::SampleScale::kLevels},
                                                     {"minmax", io::SampleScale::kMinMax},
                                                     {"unit", io::SampleScale::kUnit},
                                                     {"none", io::SampleScale::kNone}};

/// One name for one path, whatever way leads there, whether or not there is a file.
fs::path PlaceOf(const std::string& path)
{
    std::error_code error;
    fs::path place = fs::weakly_canonical(fs::absolute(path, error), error);
    return place.empty() ? fs::path(path) : place;
}

/// True for two names of one file, hard links too, whether or not it is there.
bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    return fs::equivalent(a, b, error) || PlaceOf(a) == PlaceOf(b);
}

bool IsInput(const std::string& output, const std::vector<std::string>& inputs)
{
    return std::any_of(inputs.begin(), inputs.end(),
                       [&](const std::string& input) { return IsSameFile(output, io::SplitChoice(input).file); });
}

} // namespace

void AddOutput(CLI::App& command, Output& output, const std::string& what)
{
    command.add_option("-o,--output", output.path, what)->required()->type_name("OUT");
    command.add_flag("--overwrite", output.overwrite, "Let OUT replace an image that is read");
}

void AddSaveOptions(CLI::App& command, io::SaveOptions& save, const char* scaleNames)
{
    command
        .add_option("--bits", save.bits, "Bits per sample: 8, 16, 32, or -32 and -64 for floats; else the format's own")
        ->check(CLI::IsMember(std::set<int>{8, 16, 32, -32, -64}))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            scaleNames, [&save](const std::string& word) { save.scale = kScales.at(word); },
            "What fills the range of integers: the display levels, all samples from min to max, 0 to 1 (unit); or "
            "none: "
            "cut samples to the range; else what does not fit is refused")
        ->check(CLI::IsMember(kScales))
        ->type_name("WORD");
}

void AddTableFlags(CLI::App& command, bool& json, bool& csv)
{
    CLI::Option* const asJson = command.add_flag("--json", json, "Print JSON");
    command.add_flag("--csv", csv, "Print the table alone, with commas between its values")->excludes(asJson);
}

void CheckOutputs(const Output& image, const std::vector<std::string>& inputs, const std::vector<std::string>& others)
{
    if (!image.overwrite && IsInput(image.path, inputs)) {
        throw NameError(image.path, "is both input and output; --overwrite replaces it");
    }
    std::vector<std::string> seen;
    if (!image.path.empty()) { // some commands write no image
        seen.push_back(image.path);
    }
    for (const std::string& other : others) {
        if (other.empty()) {
            continue;
        }
        if (IsInput(other, inputs)) {
            throw NameError(other, "is both input and output");
        }
        if (std::any_of(seen.begin(), seen.end(), [&](const std::string& path) { return IsSameFile(path, other); })) {
            throw NameError(other, "is named for two outputs");
        }
        seen.push_back(other);
    }
}

Provisional::~Provisional()
{
    for (const std::string& file : files_) {
        std::error_code ignored;
        fs::remove(file, ignored);
    }
}

} // namespace corvane::cli
