#pragma once

#include <string>
#include <vector>

namespace corvane::cli {

/// The words of `corvane apply`, told apart.
struct ApplyWords {
    std::vector<std::string> inputs;
    std::vector<std::string> steps;
};

/// Tells images from steps: `first` is an image, and so are the files behind it, up to the first word that names a
/// step. Throws UsageError, with advice, for a word that is neither or could be both, and for a file behind a step.
ApplyWords ToldApart(const std::string& first, const std::vector<std::string>& words);

/// The image to write for each input. `output` is a file for a single one, a folder (which is there, or ends with /)
/// for files NAME.fits, or a name with {name}; NAME is that of the input without its folder and ending. Throws
/// UsageError for several inputs and one file, NameError when two inputs would be written to one.
std::vector<std::string> OutputsFor(const std::vector<std::string>& inputs, const std::string& output);

} // namespace corvane::cli
