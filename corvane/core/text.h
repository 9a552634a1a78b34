#pragma once

#include <charconv>
#include <string>

namespace corvane {

/// A number in the fewest digits that give it again.
inline std::string NumberText(double value)
{
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

/// A number with so many digits behind the point.
inline std::string NumberText(double value, int digits)
{
    char text[400];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits).ptr;
    return {text, end};
}

/// "640 x 480"
inline std::string SizeText(long long width, long long height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

} // namespace corvane
