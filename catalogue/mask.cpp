// How much of a step's change is taken: everywhere alike, or by a mask.

#include "catalogue/mask.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "catalogue/image_beside.h"
#include "catalogue/names.h"
#include "corvane/core/text.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kMask = "mask";
constexpr const char* kStrength = "strength";

/// The value of one of the parameters; null where it has none, or an operation has another of that name.
const Argument* FindMixArgument(const Arguments& arguments, std::string_view name)
{
    const std::vector<Argument>& list = arguments.List();
    const auto found = std::find_if(list.begin(), list.end(), [&](const Argument& argument) {
        return argument.parameter->isCommon && argument.parameter->name == name;
    });
    return found == list.end() ? nullptr : &*found;
}

double StrengthOf(const Arguments& arguments)
{
    const Argument* const strength = FindMixArgument(arguments, kStrength);
    return strength == nullptr ? 1.0 : std::get<double>(strength->value);
}

CStlImage ReadMask(const io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage mask = FittingImage(kMask, 1, frame, arguments, run).image;
    double min = 0.0;
    double max = 0.0;
    mask.GetMinMax(0, &min, &max);
    if (min < 0.0 || max > 1.0) {
        throw arguments.Refusal(kMask, "must hold samples from 0 to 1; it goes from " + NumberText(min) + " to " +
                                           NumberText(max));
    }
    return mask;
}

} // namespace

const char* const kMixHelp =
    "The result is original + w (result - original), with w = mask x strength, sample by sample: 0 leaves a sample as "
    "it was, 1 takes what the step makes of it. The mask is an image of one plane and of the same size, from 0 to 1, "
    "for all planes of a colour image; what is undefined in it counts as 0. The step star-mask makes one of the stars. "
    "What the step measures, it measures in the whole image, and its display levels stay those of the result. Where a "
    "sample is undefined before or after the step, the one that w is nearer to counts.";

const std::vector<Parameter>& MixParameters()
{
    static const std::vector<Parameter> parameters = [] {
        Parameter mask{.name = kMask,
                       .kind = Kind::Image,
                       .summary = "an image of one plane that is 0 where samples stay and 1 where they change",
                       .whenAbsent = "they change everywhere"};
        Parameter strength = NumberParameter(kStrength, "how much of the change is taken", "", {0.0, 1.0}, 1.0);
        mask.isCommon = strength.isCommon = true;
        return std::vector{std::move(mask), std::move(strength)};
    }();
    return parameters;
}

void AddMixParameters(Operation& operation)
{
    if (!operation.IsStep() || !UsualFootprint(operation).MayBeMixed()) {
        return;
    }
    for (const Parameter& parameter : MixParameters()) {
        if (FindNamed(operation.parameters, parameter.name) == nullptr) {
            operation.parameters.push_back(parameter);
        }
    }
}

bool TakesMask(const Operation& operation)
{
    return std::any_of(operation.parameters.begin(), operation.parameters.end(),
                       [](const Parameter& parameter) { return parameter.isCommon; });
}

bool IsMixed(const Arguments& arguments)
{
    return FindMixArgument(arguments, kMask) != nullptr || StrengthOf(arguments) != 1.0;
}

std::optional<ChangePart> PartFor(const io::Frame& frame, const Arguments& arguments, const Run& run)
{
    if (!IsMixed(arguments)) {
        return std::nullopt;
    }
    const bool hasMask = FindMixArgument(arguments, kMask) != nullptr;
    return ChangePart{hasMask ? std::optional(ReadMask(frame, arguments, run)) : std::nullopt, StrengthOf(arguments)};
}

} // namespace corvane::catalogue
