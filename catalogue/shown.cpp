#include "catalogue/shown.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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

/// What HISTORY says when the skies of planes were brought to one value, and what may have parted them again.
constexpr std::array kJoinsSkies{"corvane apply neutral-sky", "corvane lrgb ", "balance: "};
constexpr std::array kPartsSkies{"corvane apply white-balance", "corvane rgb ", "corvane cmy ", "corvane palette "};

template <std::size_t N>
bool BeginsWithOne(const std::string& line, const std::array<const char*, N>& beginnings)
{
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](const char* beginning) { return line.starts_with(beginning); });
}

/// Whether the planes have colours that one stretch for all would show.
bool HasOneSky(const io::Frame& frame)
{
    bool hasOneSky = false;
    for (const std::string& line : frame.header.History()) {
        hasOneSky = BeginsWithOne(line, kJoinsSkies) || (hasOneSky && !BeginsWithOne(line, kPartsSkies));
    }
    return hasOneSky;
}

/// The step that does it; empty for the levels that the frame has.
std::string StepFor(const std::string& stretch, const io::Frame& frame)
{
    if (HasChosenLevels(frame) && (stretch.empty() || stretch == "linear")) {
        return {};
    }
    const bool isLinked = HasOneSky(frame);
    if (stretch == "linear") {
        return frame.image.IsColor() != 0 && !isLinked ? "auto-levels:per-plane=yes" : "auto-levels";
    }
    std::string step = isLinked ? "autostretch" : "autostretch:linked=no";
    if (stretch == "asinh") {
        return step + (isLinked ? ":" : ",") + "curve=asinh";
    }
    if (!stretch.empty() && stretch != "auto") {
        throw ParameterError("stretch", stretch, "must be auto, linear or asinh");
    }
    return step;
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
