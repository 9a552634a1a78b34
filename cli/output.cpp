#include "cli/output.h"

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

constexpr const char* kBoth = "is both input and output";

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
            "none: cut samples to the range; else what does not fit is refused")
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
    const FileSet read = InputFiles(inputs);
    if (!image.overwrite && read.Has(image.path)) {
        throw NameError(image.path, kBoth + std::string("; --overwrite replaces it"));
    }
    FileSet written;
    if (!image.path.empty()) { // some commands write no image
        written.Add(image.path);
    }
    CheckOthers(others, read, written);
}

FileSet InputFiles(const std::vector<std::string>& inputs)
{
    FileSet files;
    for (const std::string& input : inputs) {
        files.Add(io::SplitChoice(input).file);
    }
    return files;
}

void CheckOthers(const std::vector<std::string>& others, const FileSet& read, FileSet written)
{
    for (const std::string& other : others) {
        if (other.empty()) {
            continue;
        }
        if (read.Has(other)) {
            throw NameError(other, kBoth);
        }
        if (written.Has(other)) {
            throw NameError(other, "is named for two outputs");
        }
        written.Add(other);
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
