#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io/frame.h"
#include "io/reader.h"

namespace corvane::cli {

/// How standard input and output are called in the place of a file.
inline constexpr const char* kStandardStream = "-";

/// The words that name files.
std::vector<std::string> FilesAmong(std::vector<std::string> words);

/// Opens or loads what a word of the command line names: a file, or standard input, which is copied to a nameless file
/// first, since formats are not read from the front to the end. Throws Error that calls it "standard input".
std::unique_ptr<io::FrameReader> OpenInput(const std::string& word, io::Cubes cubes = io::Cubes::kRefuse);
io::Frame LoadInput(const std::string& word);

/// Writes an image to the file that a word names, or as FITS to standard output. Throws Error.
void SaveOutput(const std::string& word, const io::Frame& frame, const io::SaveOptions& options);

/// Throws the Error that `SaveOutput` would throw for the word alone.
void CheckOutput(const std::string& word, const io::SaveOptions& options);

} // namespace corvane::cli
