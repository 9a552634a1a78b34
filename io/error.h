#pragma once

#include <stdexcept>
#include <string>

#include "corvane/platform/export.h"

namespace corvane::io {

/// A file that cannot be read or written. what() is "PATH: REASON".
class CORVANE_VISIBLE Error : public std::runtime_error {
public:
    Error(const std::string& path, const std::string& reason)
        : std::runtime_error(path + ": " + reason), path_(path), reason_(reason)
    {}

    /// The file as the caller named it.
    const std::string& Path() const { return path_; }
    /// What is wrong, in words for a person.
    const std::string& Reason() const { return reason_; }

private:
    std::string path_;
    std::string reason_;
};

/// A name that no file could have, whatever the others hold: nothing is written under it, or another output has it.
class CORVANE_VISIBLE NameError : public Error {
public:
    using Error::Error;
};

} // namespace corvane::io
