#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "catalogue/parameter.h"

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
class Arguments {
public:
    void Add(Argument argument) { list_.push_back(std::move(argument)); }
    const std::vector<Argument>& List() const { return list_; }

    /// True when the parameter was given or has a default.
    bool Has(std::string_view name) const { return Find(name) != nullptr; }
    /// True when a number was given by a word.
    bool IsWord(std::string_view name) const;
    double Number(std::string_view name) const;
    int Whole(std::string_view name) const;
    bool Flag(std::string_view name) const;
    /// The text of a choice or of a file name.
    const std::string& Text(std::string_view name) const;
    const Points& Curve(std::string_view name) const;
    /// The rectangle in the form that operations take: null when none was given. It lives as long as the arguments.
    CRect* Rectangle(std::string_view name);

private:
    const Value* Find(std::string_view name) const;
    template <typename Type>
    const Type& Get(std::string_view name) const;

    std::vector<Argument> list_;
};

} // namespace corvane::catalogue
