#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "corvane/platform/export.h"

namespace corvane {

/// What is wrong with what was asked for or given, as data: which parameter, input or file it is, what it holds, and
/// what would be allowed. what() joins them for people: "median: radius = 7: must be 1 to 5".
class CORVANE_VISIBLE Error : public std::runtime_error {
public:
    enum class Kind {
        kParameter, ///< a value that is not allowed, missing, unknown, or at odds with another
        kName,      ///< a name that no output can have, or that another file has
        kInput,     ///< an image that the work cannot be done on
        kFile,      ///< a file that cannot be read or written
    };

    /// `subject` is the id of the parameter or input, or the path of the file as the caller named it; `value` is empty
    /// where there is none to show.
    Error(Kind kind, std::string subject, std::string value, std::string reason);

    bool Is(Kind kind) const { return kind_ == kind; }
    /// The id of the parameter or input, or the path; empty when the matter has no name.
    const std::string& Subject() const { return subject_; }
    const std::string& Value() const { return value_; }
    /// What is wrong, or what would be allowed, in words.
    const std::string& Reason() const { return reason_; }
    /// The operation that it is about; empty when there is none.
    const std::string& Operation() const { return operation_; }

    /// The same error of an operation.
    Error Of(std::string operation) const;

private:
    Kind kind_;
    std::string subject_;
    std::string value_;
    std::string reason_;
    std::string operation_;
};

/// A parameter's value that is not allowed, with what would be: "sigma = 99: must be 0.1 to 10".
inline Error ParameterError(std::string parameter, std::string value, std::string allowed)
{
    return {Error::Kind::kParameter, std::move(parameter), std::move(value), std::move(allowed)};
}

/// Something wrong with parameters that is no single value: "dx must be given".
inline Error ParameterError(std::string reason)
{
    return {Error::Kind::kParameter, {}, {}, std::move(reason)};
}

/// An image that the work cannot be done on.
inline Error InputError(std::string input, std::string reason)
{
    return {Error::Kind::kInput, std::move(input), {}, std::move(reason)};
}

/// A file that cannot be read or written: "m31.fits: is truncated".
inline Error FileError(std::string path, std::string reason)
{
    return {Error::Kind::kFile, std::move(path), {}, std::move(reason)};
}

/// A name that no output can have, or that another output has.
inline Error NameError(std::string path, std::string reason)
{
    return {Error::Kind::kName, std::move(path), {}, std::move(reason)};
}

} // namespace corvane
