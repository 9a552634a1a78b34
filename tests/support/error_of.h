#pragma once

#include <exception>
#include <string>

namespace corvane::test {

/// What an action throws, as text; "no error" when it throws nothing.
template <class Error = std::exception, class Action>
std::string ErrorOf(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

} // namespace corvane::test
