#include "corvane/core/error.h"

#include <utility>

namespace corvane {
namespace {

std::string Joined(const std::string& operation, const std::string& subject, const std::string& value,
                   const std::string& reason)
{
    std::string text = operation.empty() ? "" : operation + ": ";
    text += subject;
    text += value.empty() ? "" : " = " + value;
    text += subject.empty() ? "" : ": ";
    return text + reason;
}

} // namespace

Error::Error(Kind kind, std::string subject, std::string value, std::string reason)
    : std::runtime_error(Joined({}, subject, value, reason)), kind_(kind), subject_(std::move(subject)),
      value_(std::move(value)), reason_(std::move(reason))
{}

Error Error::Of(std::string operation) const
{
    Error named = *this;
    static_cast<std::runtime_error&>(named) = std::runtime_error(Joined(operation, subject_, value_, reason_));
    named.operation_ = std::move(operation);
    return named;
}

} // namespace corvane
