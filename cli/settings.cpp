#include "cli/settings.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "corvane/platform/registry.h"
#include "io/input_file.h"

namespace corvane::cli {
namespace {

std::optional<double> Number(std::string_view text)
{
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

// Reads one line; `section` is the one it stands in. Returns what is wrong with it, or nothing.
std::string ReadLine(std::string_view line, std::string& section)
{
    if (line.empty() || line.front() == '#' || line.front() == ';') {
        return {};
    }
    if (line.front() == '[' && line.back() == ']') {
        section = Trim(line.substr(1, line.size() - 2), kLineBlanks);
        return section.empty() ? "a section without a name" : "";
    }
    const std::size_t equals = line.find('=');
    const std::string key(Trim(line.substr(0, equals), kLineBlanks));
    if (equals == std::string_view::npos || key.empty()) {
        return "neither [section] nor key=number";
    }
    const std::optional<double> value = Number(Trim(line.substr(equals + 1), kLineBlanks));
    if (!value) {
        return "the value of " + key + " is not a number";
    }
    if (section.empty()) {
        return key + " stands before the first [section]";
    }
    CRegistry::Write(section.c_str(), key.c_str(), *value);
    return {};
}

std::string DefaultPath()
{
    const char* const configured = std::getenv("XDG_CONFIG_HOME");
    const char* const home = std::getenv("HOME");
    const std::string folder = configured != nullptr && *configured != '\0' ? configured
                               : home != nullptr                            ? std::string(home) + "/.config"
                                                                            : "";
    return folder.empty() ? "" : folder + "/corvane/settings.ini";
}

} // namespace

void ReadSettings()
{
    const char* const named = std::getenv("CORVANE_CONFIG");
    const bool mustExist = named != nullptr && *named != '\0';
    const std::string path = mustExist ? named : DefaultPath();
    std::error_code error;
    if (!mustExist && !std::filesystem::exists(path, error)) {
        return;
    }
    io::CheckOrdinaryFile(path);
    std::ifstream stream(path);
    if (!stream) {
        throw FileError(path, "the settings cannot be read");
    }
    ReadSettings(stream, path);
}

void ReadSettings(std::istream& stream, const std::string& path)
{
    std::string section;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const std::string mistake = ReadLine(Trim(line, kLineBlanks), section);
        if (!mistake.empty()) {
            throw FileError(path, "line " + std::to_string(number) + ": " + mistake);
        }
    }
    if (stream.bad()) {
        throw FileError(path, "the settings cannot be read");
    }
}

} // namespace corvane::cli
