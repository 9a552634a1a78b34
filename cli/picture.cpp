#include "cli/picture.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "io/metadata.h"
#include "io/output_file.h"
#include "io/picture.h"

namespace corvane::cli {

void CheckPicture(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (extension != ".png") {
        throw NameError(path, "is no name for a picture; it must end with .png");
    }
    io::OutputFile::Check(path);
}

void SavePicture(const std::string& path, io::Frame& frame, const std::string& levels)
{
    if (!levels.empty()) {
        catalogue::RunStep(catalogue::ParseStep(levels), frame, {});
    }
    io::SavePicture(path, frame.image, io::IsBottomUp(frame.header));
}

} // namespace corvane::cli
