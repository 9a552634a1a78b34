#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace corvane {

/// @name Letters of ASCII as capital or small ones, whatever the locale; all else stays as it is
/// @{
constexpr char Upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string Upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return Upper(c); });
    return text;
}

inline std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return Lower(c); });
    return text;
}
/// @}

/// True for texts that differ in no more than capital and small letters.
inline bool SameWord(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Upper(x) == Upper(y); });
}

/// A text without the spaces about it, or without other letters that are blank.
inline std::string_view Trim(std::string_view text, std::string_view blanks = " ")
{
    const auto first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view{} : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// What is blank in a line of a text file: spaces, tabs, and what other systems end it with.
inline constexpr std::string_view kLineBlanks = " \t\r";

} // namespace corvane
