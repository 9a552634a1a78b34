#include "cli/picture.h"

#include <filesystem>

#include "catalogue/step.h"
#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/metadata.h"
#include "io/output_file.h"
#include "io/picture.h"

namespace corvane::cli {

void CheckPicture(const std::string& path)
{
    if (!SameWord(std::filesystem::path(path).extension().string(), ".png")) {
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
