#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/platform/export.h"

namespace corvane::catalogue {

/// The planes of a colour image, as parameters are called that are for one of them.
inline constexpr std::array<const char*, 3> kChannels{"red", "green", "blue"};

/// The names that somebody who typed `word` probably meant, at most three that are equally near: those that begin with
/// it, or differ by few letters added, left out, changed or exchanged. Small and capital letters are the same.
CORVANE_VISIBLE std::vector<std::string> NearestNames(std::string_view word, const std::vector<std::string>& names);

/// "; did you mean median or mean?" with the nearest names, or nothing when none is near.
CORVANE_VISIBLE std::string Suggestion(std::string_view word, const std::vector<std::string>& names);

/// "a, b or c"
CORVANE_VISIBLE std::string Joined(const std::vector<std::string>& words);

/// The place of a word in a list; the size of the list when it is not there.
CORVANE_VISIBLE int PlaceOf(std::string_view word, const std::vector<std::string>& words);

/// The item of a list that has this name or alias; null when there is none.
template <typename Item>
const Item* FindNamed(const std::vector<Item>& items, std::string_view name)
{
    const auto found = std::find_if(items.begin(), items.end(), [=](const Item& item) {
        return item.name == name || std::find(item.aliases.begin(), item.aliases.end(), name) != item.aliases.end();
    });
    return found == items.end() ? nullptr : &*found;
}

/// The names of the items of a list, without aliases.
template <typename Item>
std::vector<std::string> Names(const std::vector<Item>& items)
{
    std::vector<std::string> names;
    for (const Item& item : items) {
        names.push_back(item.name);
    }
    return names;
}

} // namespace corvane::catalogue
