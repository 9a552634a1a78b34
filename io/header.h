#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane/platform/export.h"

namespace corvane::io {

/// What a frame says about itself: FITS header cards, kept in order as text of exactly 80 characters.
///
/// Cards that nobody changes survive to the letter: HIERARCH, CONTINUE, COMMENT, free format. Only control characters
/// become blanks, and bytes that are no ASCII '?'. Keywords are compared without regard to case; a HIERARCH keyword may
/// be given with or without that word. Of several cards with one keyword the first counts. Reading is lenient: numbers
/// in quotes, with leading zeros, a `D` exponent or a decimal comma (`6,4E-05`) are numbers.
class CORVANE_VISIBLE Header {
public:
    /// @name Reading
    /// @{
    /// True when a card with the keyword exists, with or without a value.
    bool Has(std::string_view keyword) const;
    /// The value as text: a string without quotes and trailing blanks, joined over CONTINUE cards, or any other value
    /// as it is written. Empty when there is no such card or it has no value.
    std::optional<std::string> Text(std::string_view keyword) const;
    /// The value as a finite number; empty when it is none.
    std::optional<double> Number(std::string_view keyword) const;
    /// The value T or F; empty when it is neither.
    std::optional<bool> Logical(std::string_view keyword) const;
    /// The comment behind the value, without blanks around it; empty when there is none.
    std::string Comment(std::string_view keyword) const;
    /// The HISTORY lines, each joined again from the cards that `AddHistory` spread it over.
    std::vector<std::string> History() const;
    /// Every card, in order. There is no END card.
    const std::vector<std::string>& Cards() const { return cards_; }
    /// @}

    /// @name Changing
    /// `Set` replaces the keyword's first card in place, or else appends one. An empty comment keeps the comment that
    /// is there. Keywords longer than 8 characters or with blanks become HIERARCH cards. Numbers are written so that
    /// reading gives the same bits; a number that is not finite becomes a card without value. A string that does not
    /// fit continues on CONTINUE cards. Characters outside of ASCII text become '?'.
    /// @{
    void Set(std::string_view keyword, double value, std::string_view comment = {});
    void Set(std::string_view keyword, long long value, std::string_view comment = {});
    void Set(std::string_view keyword, int value, std::string_view comment = {});
    void Set(std::string_view keyword, bool value, std::string_view comment = {});
    void Set(std::string_view keyword, const std::string& value, std::string_view comment = {});
    void Set(std::string_view keyword, const char* value, std::string_view comment = {});
    /// Removes every card with the keyword, with its CONTINUE cards.
    void Remove(std::string_view keyword);
    /// Appends a HISTORY line. A text of more than 72 characters goes on several cards: one that the next card
    /// continues ends with '&' in its last column, which is not part of the text.
    void AddHistory(std::string_view text);
    /// Appends a card as it stands, cut or filled with blanks to 80 characters.
    void AddCard(std::string_view card);
    /// @}

private:
    void Replace(std::string_view keyword, std::string_view value, std::string_view comment);
    std::size_t Find(std::string_view keyword) const;
    void Put(std::string_view keyword, const std::vector<std::string>& cards);

    std::vector<std::string> cards_;
};

} // namespace corvane::io
