#pragma once

#include <stdexcept>

namespace corvane::catalogue {

/// What is wrong with a step. The text names the operation, the parameter, its value and what would be allowed.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The user pressed ESC while an operation looked for it. Its frame is not to be used any more.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "cancelled"; }
};

} // namespace corvane::catalogue
