#pragma once

#include <stdexcept>

namespace corvane::catalogue {

/// What is wrong with a step. The text names the operation, the parameter, its value and what would be allowed.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace corvane::catalogue
