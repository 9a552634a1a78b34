#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane::stack {

/// The nights in which frames were taken: between two of them there is nothing for six hours or more.
class Sessions {
public:
    /// Of frames that began at these times [s since 1970], in any order.
    explicit Sessions(std::vector<double> times);

    int Count() const { return static_cast<int>(spans_.size()); }
    /// The session that a time lies in or next to; nothing for none.
    std::optional<int> At(const std::optional<double>& time) const;
    /// How far two sessions are apart [s]; 0 when one is not known.
    double Between(const std::optional<int>& a, const std::optional<int>& b) const;
    /// The date (UTC) on which a session began; empty when it is not known.
    std::string DateOf(const std::optional<int>& session) const;

private:
    struct Span {
        double first;
        double last;
    };

    std::vector<Span> spans_;
};

} // namespace corvane::stack
