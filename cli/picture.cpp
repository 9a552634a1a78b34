#include "cli/picture.h"

#include <set>

#include <CLI/Validators.hpp>

#include "catalogue/shown.h"
#include "catalogue/step.h"
#include "io/metadata.h"

namespace corvane::cli {

CLI::Option* AddStretch(CLI::App& command, PictureWords& words)
{
    return command
        .add_option("--stretch", words.stretch,
                    "How brightness is shown: auto (the sky dark grey, as the step autostretch), asinh (the same with "
                    "the colours of stars) or linear. Without it, a frame to which a step has given display levels is "
                    "shown with those, and any other by auto")
        ->check(CLI::IsMember(std::set<std::string>{"auto", "linear", "asinh"}))
        ->type_name("auto|linear|asinh");
}

void SavePicture(const std::string& path, const io::Frame& frame, const PictureWords& words,
                 const std::optional<std::string>& levels)
{
    io::Frame shown{frame.image.Shared(), frame.header};
    catalogue::Reduce(shown, words.size);
    if (!levels) {
        catalogue::MakeShown(shown, words.stretch);
    } else if (!levels->empty()) {
        catalogue::RunStep(catalogue::ParseStep(*levels), shown, {});
    }
    io::SavePicture(path, shown.image, io::IsBottomUp(shown.header), words.format);
}

void AddPictureFormat(CLI::App& command, PictureWords& words)
{
    command.add_option("--size", words.size, "Make a picture whose longer side has at most so many pixels")
        ->check(CLI::Range(1, 100000))
        ->type_name("N");
    command.add_option("--quality", words.format.quality, "Quality of a JPEG")
        ->check(CLI::Range(1, 100))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--bits", words.format.bits, "Bits per sample: 8 or 16; else 16 for TIFF, 8 for others")
        ->check(CLI::IsMember(std::set<int>{8, 16}))
        ->type_name("N");
}

} // namespace corvane::cli
