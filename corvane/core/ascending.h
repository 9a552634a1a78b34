#pragma once

#include <cmath>

namespace corvane {

/// The order of numbers for sorting, NaN behind all others: with a plain < the library's sort could leave its range.
struct Ascending {
    bool operator()(double a, double b) const { return a < b || (std::isnan(b) && !std::isnan(a)); }
};

} // namespace corvane
