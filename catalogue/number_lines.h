#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace corvane::catalogue {

/// What a text file of numbers may hold, with words for what is wrong.
struct NumberLines {
    const char* what;        ///< "a curve"
    const char* lineIs;      ///< "one number or two"
    std::size_t mostNumbers; ///< on a line
};

/// Reads the numbers of a text file, as many on each line. Commas count as blanks, # begins a comment, and lines
/// without numbers are passed over. Throws Error that names the file and what is wrong with it.
std::vector<std::vector<double>> ReadNumberLines(const std::string& file, const NumberLines& allowed);

} // namespace corvane::catalogue
