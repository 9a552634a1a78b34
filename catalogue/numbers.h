#pragma once

#include <string>
#include <vector>

#include "catalogue/parameter.h"
#include "corvane/core/error.h"

namespace corvane::catalogue {

/// Throws Error, "ratio = 7: must be 0 to 1", for a number out of its range and for NaN.
inline void CheckRange(const std::string& option, double value, double min, double max)
{
    const bool isAllowed = value >= min && value <= max; // NaN is not
    if (!isAllowed) {
        throw ParameterError(option, ToText(Value(value)),
                             "must be " + ToText(Value(min)) + " to " + ToText(Value(max)));
    }
}

/// "1,2.5"
inline std::string NumbersText(const std::vector<double>& numbers)
{
    return ToText(Value(numbers));
}

} // namespace corvane::catalogue
