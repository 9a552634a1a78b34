#include "catalogue/shown.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"

namespace corvane::catalogue {
namespace {

constexpr std::string_view kDoneByCorvane = "corvane ";
constexpr std::string_view kByStep = "apply ";

void RunText(const std::string& step, io::Frame& frame)
{
    RunStep(ParseStep(step), frame, {});
}

bool HasChosenLevels(const io::Frame& frame)
{
    const std::vector<std::string> history = frame.header.History();
    return frame.image.HasOwnLevel() != 0 && std::any_of(history.begin(), history.end(), [](const std::string& line) {
               return line.starts_with(kDoneByCorvane);
           });
}

/// Whether a command's frames were balanced, as its line says or as is usual.
bool IsBalanced(const Operation& operation, std::string_view line)
{
    constexpr std::string_view kBalanceOption = " --balance ";
    constexpr std::string_view kUnbalanced = "none";
    if (const auto place = line.rfind(kBalanceOption); place != std::string_view::npos) {
        return !line.substr(place + kBalanceOption.size()).starts_with(kUnbalanced);
    }
    return ToText(*FindNamed(operation.parameters, "balance")->defaultValue) != kUnbalanced;
}

/// What a line of HISTORY did to the skies of planes.
Skies SkiesAfter(std::string_view line)
{
    line.remove_prefix(kDoneByCorvane.size());
    line.remove_prefix(line.starts_with(kByStep) ? kByStep.size() : 0);
    const Operation* const operation = FindNamed(Operations(), line.substr(0, line.find_first_of(" :")));
    if (operation == nullptr || operation->skies != Skies::Balanced) {
        return operation == nullptr ? Skies::Kept : operation->skies;
    }
    return IsBalanced(*operation, line) ? Skies::Joined : Skies::Parted;
}

/// Whether the planes have colours that one stretch for all would show.
bool HasOneSky(const io::Frame& frame)
{
    bool hasOneSky = false;
    for (const std::string& line : frame.header.History()) {
        const Skies skies = line.starts_with(kDoneByCorvane) ? SkiesAfter(line) : Skies::Kept;
        hasOneSky = skies == Skies::Joined || (hasOneSky && skies != Skies::Parted);
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
