#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "io/reader.h"

namespace corvane::io {

/// True for keywords that describe how a file is laid out rather than what it shows; they are never carried over.
bool IsLayoutKeyword(std::string_view keyword);

/// Adds the cards in a text of 80-character cards, without layout cards, END and blank cards at the end.
void AddCards(Header& header, std::string_view text);
/// Adds the cards of `other` whose keywords the header lacks, commentary left out.
void Inherit(Header& header, const Header& other);

/// Puts the world coordinates of the header's cards into the image's record.
CORVANE_VISIBLE void ReadCoordinates(const Header& header, CImage& image);
/// Puts the image's world coordinates, if it has any, in place of the header's.
CORVANE_VISIBLE void WriteCoordinates(const CImage& image, Header& header);

/// The display levels that a header states for a plane.
std::optional<Levels> ReadLevels(const Header& header, int plane);
/// Puts the image's own levels, or none, in place of the header's.
void WriteLevels(const CImage& image, Header& header);

/// The header as lines of text, for formats that can hold a description.
std::string ToDescription(const Header& header);
/// The header from a description: what `ToDescription` made of it, or else the text as COMMENT cards. A row order that
/// it does not state becomes the one given.
Header FromDescription(std::string_view text, std::string_view rowOrder);

} // namespace corvane::io
