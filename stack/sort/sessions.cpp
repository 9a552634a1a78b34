#include "stack/sort/sessions.h"

#include <algorithm>

#include "io/metadata.h"

namespace corvane::stack {

namespace {

constexpr double kPause = 6.0 * 3600.0;

} // namespace

Sessions::Sessions(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    for (const double time : times) {
        if (spans_.empty() || time - spans_.back().last > kPause) {
            spans_.push_back({time, time});
        }
        spans_.back().last = time;
    }
}

std::optional<int> Sessions::At(const std::optional<double>& time) const
{
    if (!time || spans_.empty()) {
        return std::nullopt;
    }
    const auto distance = [&](const Span& span) { return std::max({span.first - *time, *time - span.last, 0.0}); };
    const auto nearest = std::min_element(spans_.begin(), spans_.end(),
                                          [&](const Span& a, const Span& b) { return distance(a) < distance(b); });
    return static_cast<int>(nearest - spans_.begin());
}

double Sessions::Between(const std::optional<int>& a, const std::optional<int>& b) const
{
    if (!a || !b || *a == *b) {
        return 0.0;
    }
    const auto [early, late] = std::minmax(*a, *b);
    return spans_[static_cast<std::size_t>(late)].first - spans_[static_cast<std::size_t>(early)].last;
}

std::string Sessions::DateOf(const std::optional<int>& session) const
{
    constexpr std::size_t kDate = 10; // characters of 2024-03-09
    return session ? io::FormatTime(spans_[static_cast<std::size_t>(*session)].first).substr(0, kDate) : "";
}

} // namespace corvane::stack
