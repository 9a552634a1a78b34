#pragma once

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "catalogue/arguments.h"
#include "catalogue/footprint.h"
#include "catalogue/parameter.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::catalogue {

/// The parameter `shape` of filters: a neighbourhood, by its name or by the code that the library has for it.
inline Parameter ShapeParameter(const char* defaultShape)
{
    return {.name = "shape",
            .kind = Kind::Choice,
            .summary = "which neighbours count: 4 (cross), 8 (square3) or 20 (square5, without its corners)",
            .choices = {"cross", "square3", "square5", "0", "1", "2"},
            .defaultValue = std::string(defaultShape),
            .aliases = {"type"}};
}

/// The parameter `weight` of means over a shape.
inline Parameter WeightParameter()
{
    return NumberParameter("weight", "weight of each neighbour in the mean; the sample itself has 1", "", {0.0, 1e6},
                           1.0);
}

/// The code of the value of a parameter that names three codes in turn, and then the codes themselves.
inline int CodeOf(const Argument& argument)
{
    const std::vector<std::string>& choices = argument.parameter->choices;
    const auto& text = std::get<std::string>(argument.value);
    return static_cast<int>(std::find(choices.begin(), choices.end(), text) - choices.begin()) % 3;
}

/// The code of the shape that was chosen.
inline int Shape(const Arguments& arguments)
{
    const auto& list = arguments.List();
    return CodeOf(
        *std::find_if(list.begin(), list.end(), [](const Argument& a) { return a.parameter->name == "shape"; }));
}

/// The footprint of a filter over the shape.
template <LevelUse kLevels = LevelUse::Unread>
Footprint AroundShape(const Arguments& arguments)
{
    return Around(filter::Radius(Shape(arguments)), kLevels);
}

} // namespace corvane::catalogue
