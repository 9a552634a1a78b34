#include "catalogue/names.h"

#include <algorithm>
#include <utility>

#include "corvane/core/ascii.h"

namespace corvane::catalogue {
namespace {

constexpr std::size_t kMostNames = 3;

// Optimal string alignment distance over the last three rows of its table.
std::size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row.back();
}

} // namespace

std::vector<std::string> NearestNames(std::string_view word, const std::vector<std::string>& names)
{
    const std::string typed = Lower(std::string(word));
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& name : names) {
        const bool begins = typed.size() > 1 && name.starts_with(typed);
        const std::size_t distance = begins ? 1 : Distance(typed, name);
        if (distance <= std::max<std::size_t>(1, word.size() / 3)) {
            found.emplace_back(distance, name);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> nearest;
    for (auto& [distance, name] : found) {
        if (distance == found.front().first && nearest.size() < kMostNames) {
            nearest.push_back(std::move(name));
        }
    }
    return nearest;
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& names)
{
    const std::vector<std::string> nearest = NearestNames(word, names);
    return nearest.empty() ? std::string() : "; did you mean " + Joined(nearest) + "?";
}

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
    }
    return text;
}

int PlaceOf(std::string_view word, const std::vector<std::string>& words)
{
    return static_cast<int>(std::find(words.begin(), words.end(), word) - words.begin());
}

} // namespace corvane::catalogue
