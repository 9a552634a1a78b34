#include "catalogue/shown.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "catalogue/step.h"
#include "corvane/core/error.h"

namespace corvane::catalogue {
namespace {

void RunText(const std::string& step, io::Frame& frame)
{
    RunStep(ParseStep(step), frame, {});
}

bool HasChosenLevels(const io::Frame& frame)
{
    const std::vector<std::string> history = frame.header.History();
    return frame.image.HasOwnLevel() != 0 && std::any_of(history.begin(), history.end(), [](const std::string& line) {
               return line.starts_with("corvane ");
           });
}

/// The step that does it; empty for the levels that the frame has.
std::string StepFor(const std::string& stretch, const io::Frame& frame)
{
    if (HasChosenLevels(frame) && (stretch.empty() || stretch == "linear")) {
        return {};
    }
    if (stretch == "linear") {
        return frame.image.IsColor() != 0 ? "auto-levels:per-plane=yes" : "auto-levels";
    }
    if (stretch == "asinh") {
        return "autostretch:linked=no,curve=asinh";
    }
    if (!stretch.empty() && stretch != "auto") {
        throw ParameterError("stretch", stretch, "must be auto, linear or asinh");
    }
    return "autostretch:linked=no";
}

} // namespace

void MakeShown(io::Frame& frame, const std::string& stretch)
{
    if (const std::string step = StepFor(stretch, frame); !step.empty()) {
        RunText(step, frame);
    }
}

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

} // namespace corvane::catalogue
