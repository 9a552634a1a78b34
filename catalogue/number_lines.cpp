#include "catalogue/number_lines.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include "corvane/core/error.h"
#include "io/input_file.h"

namespace corvane::catalogue {
namespace {

constexpr std::uintmax_t kMostFileBytes = 16 << 20; // more is nothing that somebody meant

/// The numbers of a line.
std::vector<double> ReadNumberLine(const std::string& file, std::string line, int number, const NumberLines& allowed)
{
    line.resize(std::min(line.find('#'), line.size()));
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream stream(line);
    std::vector<double> numbers;
    for (std::string word; stream >> word;) {
        double& v = numbers.emplace_back();
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), v);
        if (error != std::errc() || end != word.data() + word.size() || numbers.size() > allowed.mostNumbers) {
            throw FileError(file, "line " + std::to_string(number) + " is not " + allowed.lineIs);
        }
    }
    return numbers;
}

} // namespace

std::vector<std::vector<double>> ReadNumberLines(const std::string& file, const NumberLines& allowed)
{
    io::CheckOrdinaryFile(file);
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(file, error);
    std::ifstream stream(file);
    if (error || !stream) {
        throw FileError(file, "cannot be read");
    }
    if (bytes > kMostFileBytes) {
        throw FileError(file, std::string("is too large for ") + allowed.what);
    }
    std::vector<std::vector<double>> lines;
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        std::vector<double> numbers = ReadNumberLine(file, line, number, allowed);
        if (!numbers.empty() && !lines.empty() && numbers.size() != lines.front().size()) {
            throw FileError(file, "line " + std::to_string(number) + " has not as many numbers as those before");
        }
        if (!numbers.empty()) {
            lines.push_back(std::move(numbers));
        }
    }
    return lines;
}

} // namespace corvane::catalogue
