#include "io/formats/fits_keys.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/card.h"
#include "io/formats/cards.h"

namespace corvane::io {
std::string Numbered(const char* name, long long number)
{
    return name + std::to_string(number);
}

FitsKeys::FitsKeys(std::string name, std::string_view cards) : name_(std::move(name))
{
    Header* last = nullptr;
    for (; !cards.empty(); cards.remove_prefix(std::min(cards.size(), kCardLength))) {
        const std::string_view card = cards.substr(0, kCardLength);
        // Some programs write the '=' too far to the left.
        const std::string_view keyword = Trim(card.substr(0, std::min(card.find('='), kKeywordLength)));
        if (keyword == "CONTINUE") {
            if (last != nullptr) {
                last->AddCard(card);
            }
            continue;
        }
        last = nullptr;
        if (IsLayoutKeyword(keyword)) {
            const auto [place, isFirst] = first_.try_emplace(std::string(keyword));
            last = isFirst ? &place->second : nullptr;
        }
        if (last != nullptr) {
            last->AddCard(card);
        }
    }
}

const Header* FitsKeys::Find(std::string_view keyword) const
{
    const auto found = first_.find(keyword);
    return found == first_.end() ? nullptr : &found->second;
}

std::string FitsKeys::Text(std::string_view keyword) const
{
    const Header* card = Find(keyword);
    return card == nullptr ? std::string() : std::string(Trim(card->Text(keyword).value_or("")));
}

std::optional<long long> FitsKeys::Integer(std::string_view keyword) const
{
    const std::string text = Text(keyword);
    const char* const end = text.data() + text.size();
    long long value = 0;
    const auto [rest, error] = std::from_chars(text.data() + (text.starts_with('+') ? 1 : 0), end, value);
    if (error == std::errc() && rest == end) {
        return value;
    }
    // Some programs write whole numbers as 32768.0 or 1.E3.
    constexpr double kExact = 9007199254740992.0;
    const double number = text.empty() ? kExact : Find(keyword)->Number(keyword).value_or(kExact);
    return std::abs(number) < kExact && number == std::nearbyint(number) ? std::optional(static_cast<long long>(number))
                                                                         : std::nullopt;
}

long long FitsKeys::Whole(std::string_view keyword, long long min, long long max) const
{
    const auto value = Integer(keyword);
    if (!value || *value < min || *value > max) {
        Fail(keyword, "a whole number " + (max == std::numeric_limits<long long>::max()
                                               ? "of " + std::to_string(min) + " or more"
                                               : "from " + std::to_string(min) + " to " + std::to_string(max)));
    }
    return *value;
}

long long FitsKeys::Whole(std::string_view keyword, long long min, long long max, long long absent) const
{
    return Text(keyword).empty() ? absent : Whole(keyword, min, max);
}

double FitsKeys::Number(std::string_view keyword, double absent) const
{
    if (Text(keyword).empty()) {
        return absent;
    }
    const auto value = Find(keyword)->Number(keyword);
    if (!value) {
        Fail(keyword, "a number");
    }
    return *value;
}

void FitsKeys::Fail(std::string_view keyword, const std::string& need) const
{
    const std::string text = Text(keyword);
    throw FileError(name_, std::string(keyword) + (text.empty() ? " is missing" : " is '" + text + "'") +
                               "; it must be " + need);
}

} // namespace corvane::io
