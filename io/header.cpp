#include "io/header.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>

#include "corvane/core/ascii.h"
#include "io/card.h"

namespace corvane::io {
namespace {

constexpr std::size_t kHistoryLength = kCardLength - kKeywordLength;
constexpr std::size_t kValueColumn = 30; // where the standard ends a number
constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr std::string_view kHierarch = "HIERARCH ";

bool IsText(char c)
{
    return c >= ' ' && c <= '~';
}

std::string_view WithoutHierarch(std::string_view keyword)
{
    return keyword.starts_with(kHierarch) ? Trim(keyword.substr(kHierarch.size())) : Trim(keyword);
}

bool IsContinue(std::string_view card)
{
    return card.starts_with("CONTINUE  ");
}

/// A card taken apart; `field` is what stands behind the '=' and is empty when there is none.
struct CardParts {
    std::string_view keyword;
    std::string_view field;
};

CardParts Split(std::string_view card)
{
    const std::string_view first = Trim(card.substr(0, kKeywordLength));
    const auto equals = card.find('=');
    if (first.empty() || first == "COMMENT" || first == "HISTORY" || first == "CONTINUE" || equals == card.npos) {
        return {first, {}};
    }
    // Some programs write keywords of more than eight characters, or the '=' too far to the left.
    const std::string_view word = Trim(card.substr(0, equals));
    if (card.starts_with(kHierarch) || word.find(' ') == word.npos) {
        return {WithoutHierarch(word), card.substr(equals + 1)};
    }
    return {first, {}};
}

/// The value and the comment of a value field. `text` is without quotes.
struct Value {
    std::string text;
    std::string_view comment;
};

std::string_view CommentIn(std::string_view rest)
{
    const auto slash = rest.find('/');
    return slash == rest.npos ? std::string_view{} : Trim(rest.substr(slash + 1));
}

Value ParseQuoted(std::string_view field)
{
    std::string text;
    std::size_t i = 1;
    for (; i < field.size(); ++i) {
        if (field[i] == '\'') {
            if (i + 1 == field.size() || field[i + 1] != '\'') {
                break;
            }
            ++i; // a doubled quote stands for one
        }
        text += field[i];
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return {text, CommentIn(field.substr(std::min(i + 1, field.size())))};
}

Value ParseField(std::string_view field)
{
    field = Trim(field);
    if (field.starts_with('\'')) {
        return ParseQuoted(field);
    }
    return {std::string(Trim(field.substr(0, field.find('/')))), CommentIn(field)};
}

std::optional<double> ParseNumber(std::string text)
{
    std::replace(text.begin(), text.end(), 'D', 'E');
    std::replace(text.begin(), text.end(), 'd', 'e');
    if (text.find('.') == text.npos && std::count(text.begin(), text.end(), ',') == 1) {
        std::replace(text.begin(), text.end(), ',', '.');
    }
    const char* first = text.data() + (text.starts_with('+') ? 1 : 0);
    const char* last = text.data() + text.size();
    double number = 0.0;
    const auto [end, error] = std::from_chars(first, last, number);
    if (error != std::errc() || end != last || !std::isfinite(number)) {
        return std::nullopt;
    }
    return number;
}

/// Only ASCII text may stand in a card.
std::string Printable(std::string_view text)
{
    std::string printable(text);
    std::replace_if(
        printable.begin(), printable.end(), [](char c) { return !IsText(c); }, '?');
    return printable;
}

std::string Padded(std::string_view text)
{
    std::string card(kCardLength, ' ');
    text.copy(card.data(), kCardLength);
    return card;
}

bool IsPlainKeyword(std::string_view keyword)
{
    return keyword.size() <= kKeywordLength && std::all_of(keyword.begin(), keyword.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
           });
}

/// What stands before the value.
std::string Lead(std::string_view keyword)
{
    std::string lead = Upper(Printable(keyword));
    if (IsPlainKeyword(lead)) {
        lead.resize(kKeywordLength, ' ');
        return lead + "= ";
    }
    return std::string(kHierarch) + lead + " = ";
}

std::string WithComment(std::string card, std::string_view comment)
{
    if (card.size() > kCardLength) {
        throw std::invalid_argument("no room for a value behind the keyword: " + card);
    }
    if (!comment.empty()) {
        card.resize(std::max(card.size(), kValueColumn), ' ');
        card += " / " + Printable(comment);
    }
    return Padded(card);
}

/// Cuts a text into quoted pieces that fit into `first` columns and then into the columns of CONTINUE cards.
std::vector<std::string> QuotedPieces(std::string_view text, std::size_t first)
{
    constexpr std::size_t kQuotes = 2;
    std::vector<std::string> pieces(1);
    std::size_t room = first - kQuotes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string unit = text[i] == '\'' ? "''" : std::string(1, text[i]);
        const std::size_t reserve = i + 1 == text.size() ? 0 : 1; // for the '&'
        if (pieces.back().size() + unit.size() + reserve > room) {
            pieces.back() += '&';
            pieces.emplace_back();
            room = kCardLength - kKeywordLength - 2 - kQuotes;
        }
        pieces.back() += unit;
    }
    return pieces;
}

std::string FormatNumber(double value)
{
    char buffer[32];
    std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    const auto exponent = text.find('e');
    if (text.find('.') == text.npos) {
        text.insert(exponent == text.npos ? text.size() : exponent, ".0");
    }
    return Upper(text);
}

} // namespace

std::size_t Header::Find(std::string_view keyword) const
{
    const std::string_view wanted = WithoutHierarch(keyword);
    const auto found = std::find_if(cards_.begin(), cards_.end(),
                                    [&](const std::string& card) { return SameWord(Split(card).keyword, wanted); });
    return found == cards_.end() ? kNone : static_cast<std::size_t>(found - cards_.begin());
}

bool Header::Has(std::string_view keyword) const
{
    return Find(keyword) != kNone;
}

std::optional<std::string> Header::Text(std::string_view keyword) const
{
    std::size_t i = Find(keyword);
    if (i == kNone) {
        return std::nullopt;
    }
    const std::string_view field = Trim(Split(cards_[i]).field);
    std::string text = ParseField(field).text;
    while (text.ends_with('&') && i + 1 < cards_.size() && IsContinue(cards_[i + 1])) {
        text.pop_back();
        text += ParseField(std::string_view(cards_[++i]).substr(kKeywordLength)).text;
    }
    return text.empty() && !field.starts_with('\'') ? std::nullopt : std::optional(text);
}

std::optional<double> Header::Number(std::string_view keyword) const
{
    const auto text = Text(keyword);
    return text ? ParseNumber(std::string(Trim(*text))) : std::nullopt;
}

std::optional<bool> Header::Logical(std::string_view keyword) const
{
    const auto text = Text(keyword);
    if (!text || (*text != "T" && *text != "F")) {
        return std::nullopt;
    }
    return *text == "T";
}

std::string Header::Comment(std::string_view keyword) const
{
    const std::size_t i = Find(keyword);
    return i == kNone ? std::string() : std::string(ParseField(Split(cards_[i]).field).comment);
}

std::vector<std::string> Header::History() const
{
    std::vector<std::string> lines;
    bool continues = false;
    for (const std::string& card : cards_) {
        if (!card.starts_with("HISTORY")) {
            continue;
        }
        std::string text = card.substr(kKeywordLength);
        if (!continues) {
            lines.emplace_back();
        }
        continues = text.ends_with('&');
        text.erase(continues ? text.size() - 1 : text.find_last_not_of(' ') + 1);
        lines.back() += text;
    }
    return lines;
}

void Header::Put(std::string_view keyword, const std::vector<std::string>& cards)
{
    std::size_t i = Find(keyword);
    if (i == kNone) {
        i = cards_.size();
    } else {
        auto last = cards_.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        while (last != cards_.end() && IsContinue(*last)) {
            ++last;
        }
        cards_.erase(cards_.begin() + static_cast<std::ptrdiff_t>(i), last);
    }
    cards_.insert(cards_.begin() + static_cast<std::ptrdiff_t>(i), cards.begin(), cards.end());
}

void Header::Replace(std::string_view keyword, std::string_view value, std::string_view comment)
{
    const std::string kept = comment.empty() ? Comment(keyword) : std::string(comment);
    std::string card = Lead(WithoutHierarch(keyword));
    if (card.size() + value.size() < kValueColumn) {
        card.append(kValueColumn - card.size() - value.size(), ' ');
    }
    Put(keyword, {WithComment(card + std::string(value), kept)});
}

void Header::Set(std::string_view keyword, double value, std::string_view comment)
{
    Replace(keyword, std::isfinite(value) ? FormatNumber(value) : std::string(), comment);
}

void Header::Set(std::string_view keyword, long long value, std::string_view comment)
{
    Replace(keyword, std::to_string(value), comment);
}

void Header::Set(std::string_view keyword, int value, std::string_view comment)
{
    Set(keyword, static_cast<long long>(value), comment);
}

void Header::Set(std::string_view keyword, bool value, std::string_view comment)
{
    Replace(keyword, value ? "T" : "F", comment);
}

void Header::Set(std::string_view keyword, const char* value, std::string_view comment)
{
    Set(keyword, std::string(value), comment);
}

void Header::Set(std::string_view keyword, const std::string& value, std::string_view comment)
{
    constexpr std::size_t kShortest = 8; // the standard pads shorter strings
    const std::string kept = comment.empty() ? Comment(keyword) : std::string(comment);
    std::string lead = Lead(WithoutHierarch(keyword));
    if (lead.size() + kShortest + 2 > kCardLength) {
        throw std::invalid_argument("no room for a value behind the keyword: " + lead);
    }
    std::vector<std::string> pieces = QuotedPieces(Printable(value), kCardLength - lead.size());
    pieces[0].resize(std::max(pieces[0].size(), kShortest), ' ');
    std::vector<std::string> cards;
    for (const std::string& piece : pieces) {
        const bool last = &piece == &pieces.back();
        cards.push_back(WithComment(lead + "'" + piece + "'", last ? std::string_view(kept) : std::string_view()));
        lead = "CONTINUE  ";
    }
    Put(keyword, cards);
}

void Header::Remove(std::string_view keyword)
{
    while (Has(keyword)) {
        Put(keyword, {});
    }
}

void Header::AddHistory(std::string_view text)
{
    std::string rest = Printable(text);
    // A last piece that fills its card and happens to end with '&' would read as continued.
    while (rest.size() > kHistoryLength || (rest.size() == kHistoryLength && rest.ends_with('&'))) {
        cards_.push_back("HISTORY " + rest.substr(0, kHistoryLength - 1) + "&");
        rest.erase(0, kHistoryLength - 1);
    }
    cards_.push_back(Padded("HISTORY " + rest));
}

void Header::AddCard(std::string_view card)
{
    std::string text(card.substr(0, kCardLength));
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 127; }, ' ');
    cards_.push_back(Padded(Printable(text)));
}

} // namespace corvane::io
