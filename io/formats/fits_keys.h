#pragma once

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "io/header.h"

namespace corvane::io {

inline constexpr long long kAny = std::numeric_limits<long long>::max(); ///< for a number without an upper bound

/// What a header says of its file's layout, by keyword; of several cards with one keyword the first counts.
///
/// Every value is read as text before it is taken for a number. Members that ask for a number throw Error, naming
/// keyword, value and range, where there is something else.
class FitsKeys {
public:
    FitsKeys() = default;
    /// `name` stands in errors for the file; `cards` is a text of 80-character cards.
    FitsKeys(std::string name, std::string_view cards);

    bool Has(std::string_view keyword) const { return first_.find(keyword) != first_.end(); }
    /// A string without quotes and blanks around it, or any other value as it is written; empty without one.
    std::string Text(std::string_view keyword) const;
    bool IsTrue(std::string_view keyword) const { return Text(keyword) == "T"; }
    /// A whole number of 64 bits; nothing when the value is none.
    std::optional<long long> Integer(std::string_view keyword) const;
    /// A whole number from `min` to `max`.
    long long Whole(std::string_view keyword, long long min, long long max) const;
    /// The same, or `absent` when the card is missing or has no value.
    long long Whole(std::string_view keyword, long long min, long long max, long long absent) const;
    /// A finite number, or `absent`.
    double Number(std::string_view keyword, double absent) const;

    [[noreturn]] void Fail(std::string_view keyword, const std::string& need) const;
    const std::string& Name() const { return name_; }

private:
    const Header* Find(std::string_view keyword) const;

    std::string name_;
    std::map<std::string, Header, std::less<>> first_; ///< the card, and those that continue it
};

/// "ZTILE2" from "ZTILE" and 2.
std::string Numbered(const char* name, long long number);

} // namespace corvane::io
