#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "catalogue/parameter.h"
#include "corvane/core/error.h"
#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// The value of one parameter of a step.
struct Argument {
    const Parameter* parameter;
    Value value;
    bool isWritten; ///< belongs into the text of the step: it was given, or comes from the user's settings
};

/// The values with which an operation runs: those given, and the defaults of the others.
///
/// Names are those of the operation's own parameters. A reader of the wrong kind throws std::bad_variant_access, one of
/// a parameter without a value std::logic_error: only a mistake in the catalogue leads there.
class CORVANE_VISIBLE Arguments {
public:
    void Add(Argument argument) { list_.push_back(std::move(argument)); }
    const std::vector<Argument>& List() const { return list_; }

    /// True when the parameter was given or has a default.
    bool Has(std::string_view name) const { return Find(name) != nullptr; }
    /// True when a number was given by a word, an image by the name of its file.
    bool IsWord(std::string_view name) const;
    double Number(std::string_view name) const;
    int Whole(std::string_view name) const;
    bool Flag(std::string_view name) const;
    /// The text of a choice or of a file name.
    const std::string& Text(std::string_view name) const;
    const std::vector<double>& Numbers(std::string_view name) const;
    const Points& Curve(std::string_view name) const;
    /// The rectangle in the form that operations take: null when none was given. It lives as long as the arguments.
    const CRect* Rectangle(std::string_view name) const;
    /// An image of one's own: a copy of one in memory, or that of the file, read.
    io::Frame Image(std::string_view name) const;
    /// The value as a person writes it; empty for a parameter without.
    std::string InWords(std::string_view name) const;

    /// A value that is not allowed, as an Error: `throw arguments.Refusal("rank", "must be 0 to 8")`.
    Error Refusal(const std::string& name, const std::string& reason) const;

private:
    const Value* Find(std::string_view name) const;
    template <typename Type>
    const Type& Get(std::string_view name) const;

    std::vector<Argument> list_;
};

} // namespace corvane::catalogue
