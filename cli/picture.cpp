#include "cli/picture.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include <CLI/Validators.hpp>

#include "catalogue/step.h"
#include "io/metadata.h"

namespace corvane::cli {
namespace {

void RunText(const std::string& step, io::Frame& frame)
{
    catalogue::RunStep(catalogue::ParseStep(step), frame, {});
}

} // namespace

void Reduce(io::Frame& frame, int size)
{
    const int width = frame.image.GetWidth();
    const int height = frame.image.GetHeight();
    const int longest = std::max(width, height);
    if (size == 0 || longest <= size) {
        return;
    }
    const auto side = [&](int length) {
        return std::to_string(std::max(static_cast<int>(std::lround(1.0 * length * size / longest)), 1));
    };
    // Blocks become one pixel first, of which interpolating would leave some out.
    if (const int block = std::min(longest / size, std::min(width, height)); block > 1) {
        RunText("bin:x=" + std::to_string(block), frame);
    }
    RunText("resize:width=" + side(width) + ",height=" + side(height), frame);
}

namespace {

/// True for levels that a step has set. Those of camera programs are guesses, which show noise.
bool HasChosenLevels(const io::Frame& frame)
{
    const std::vector<std::string> history = frame.header.History();
    return frame.image.HasOwnLevel() != 0 && std::any_of(history.begin(), history.end(), [](const std::string& line) {
               return line.starts_with("corvane ");
           });
}

/// The step that makes a picture of a frame; empty for the levels that it has. Each plane by itself: so the sky is grey.
std::string StepFor(const PictureWords& words, const io::Frame& frame)
{
    if (HasChosenLevels(frame) && (words.stretch.empty() || words.stretch == "linear")) {
        return {};
    }
    if (words.stretch == "linear") {
        return frame.image.IsColor() != 0 ? "auto-levels:per-plane=yes" : "auto-levels";
    }
    return words.stretch == "asinh" ? "autostretch:linked=no,curve=asinh" : "autostretch:linked=no";
}

void RunIfAny(const std::string& step, io::Frame& frame)
{
    if (!step.empty()) {
        RunText(step, frame);
    }
}

} // namespace

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

void MakeShown(io::Frame& frame, const PictureWords& words)
{
    RunIfAny(StepFor(words, frame), frame);
}

void SavePicture(const std::string& path, const io::Frame& frame, const PictureWords& words,
                 const std::optional<std::string>& levels)
{
    io::Frame shown{frame.image.Shared(), frame.header};
    Reduce(shown, words.size);
    levels ? RunIfAny(*levels, shown) : MakeShown(shown, words);
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
