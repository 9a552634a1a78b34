#pragma once

#include <string>
#include <vector>

#include <CLI/App.hpp>

#include "cli/file_set.h"
#include "io/frame.h"

namespace corvane::cli {

/// The image that a command writes.
struct Output {
    std::string path;
    bool overwrite = false; ///< also when it is one of the inputs
    io::SaveOptions save;
};

/// Adds `-o, --output`, which must be given, and `--overwrite`.
void AddOutput(CLI::App& command, Output& output, const std::string& what);

constexpr const char* kScaleNames = "--scale,--bits-scale";
constexpr const char* kLongScaleName = "--bits-scale"; ///< for commands whose `--scale` is another

/// Adds `--bits`, the sample format of an output, and what becomes of samples in integers.
void AddSaveOptions(CLI::App& command, io::SaveOptions& save, const char* scaleNames = kScaleNames);

/// Adds `--json` and `--csv`, how a table is printed.
void AddTableFlags(CLI::App& command, bool& json, bool& csv);

/// Throws NameError when an output is one of the inputs, by whatever names and links, or named twice. Only the image
/// may replace an input, if it is to overwrite it. Further outputs of an empty name are not wanted.
void CheckOutputs(const Output& image, const std::vector<std::string>& inputs,
                  const std::vector<std::string>& others = {});

/// @name The parts of that, for commands that write several images
/// @{
/// The files of images that are read, without the part that is chosen of one.
FileSet InputFiles(const std::vector<std::string>& inputs);
/// Throws NameError when one of the further outputs is read, or written already.
void CheckOthers(const std::vector<std::string>& others, const FileSet& read, FileSet written);
/// @}

/// Takes files away again unless they are kept.
class Provisional {
public:
    Provisional() = default;
    ~Provisional();
    Provisional(const Provisional&) = delete;
    Provisional& operator=(const Provisional&) = delete;

    void Add(const std::string& file) { files_.push_back(file); }
    void Keep() { files_.clear(); }

private:
    std::vector<std::string> files_;
};

} // namespace corvane::cli
