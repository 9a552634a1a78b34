#include "io/formats/cards.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <tuple>
#include <utility>

#include "io/card.h"
#include "io/formats/fits_keys.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr std::string_view kFirstLine = "SIMPLE  =                    T";

/// Layout keywords; '#' stands for a number of one or more digits.
constexpr std::string_view kLayout[] = {
    "SIMPLE",  "BITPIX",   "NAXIS",    "NAXIS#",   "EXTEND",   "XTENSION", "PCOUNT",   "GCOUNT",  "GROUPS",
    "BSCALE",  "BZERO",    "BLANK",    "CHECKSUM", "DATASUM",  "INHERIT",  "EXTNAME",  "EXTVER",  "EXTLEVEL",
    "BLOCKED", "END",      "TFIELDS",  "THEAP",    "TTYPE#",   "TFORM#",   "TUNIT#",   "TNULL#",  "TSCAL#",
    "TZERO#",  "TDISP#",   "TDIM#",    "ZIMAGE",   "ZTENSION", "ZSIMPLE",  "ZEXTEND",  "ZBITPIX", "ZNAXIS",
    "ZNAXIS#", "ZTILE#",   "ZNAME#",   "ZVAL#",    "ZCMPTYPE", "ZQUANTIZ", "ZDITHER#", "ZBLANK",  "ZSCALE",
    "ZZERO",   "ZMASKCMP", "ZBLOCKED", "ZPCOUNT",  "ZGCOUNT",  "ZHECKSUM", "ZDATASUM"};

bool IsDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool Matches(std::string_view pattern, std::string_view keyword)
{
    if (!pattern.ends_with('#')) {
        return pattern == keyword;
    }
    pattern.remove_suffix(1);
    const std::string_view number = keyword.substr(std::min(pattern.size(), keyword.size()));
    return keyword.starts_with(pattern) && !number.empty() && std::all_of(number.begin(), number.end(), IsDigit);
}

std::string_view KeywordOf(std::string_view card)
{
    const std::string_view keyword = card.substr(0, card.starts_with("HIERARCH") ? card.find('=') : 8);
    return keyword.substr(0, keyword.find_last_not_of(' ') + 1);
}

bool IsCommentary(std::string_view keyword)
{
    return keyword.empty() || keyword == "COMMENT" || keyword == "HISTORY" || keyword == "CONTINUE";
}

/// Sets a number unless the card already says just that, so that its own way of writing stays.
void SetIfOther(Header& header, const std::string& keyword, double value)
{
    if (header.Number(keyword) != value) {
        header.Set(keyword, value);
    }
}

void SetIfOther(Header& header, const std::string& keyword, const CString& value)
{
    if (header.Text(keyword) != std::string(value.GetString())) {
        header.Set(keyword, value.GetString());
    }
}

void ReadMatrix(const Header& header, CImage& image)
{
    for (const auto& [name, kind, diagonal] : {std::tuple{"CD", kCdMatrix, 0.0}, std::tuple{"PC", kPcMatrix, 1.0}}) {
        const std::string stem(name);
        const auto m11 = header.Number(stem + "1_1");
        const auto m12 = header.Number(stem + "1_2");
        const auto m21 = header.Number(stem + "2_1");
        const auto m22 = header.Number(stem + "2_2");
        if (m11 || m12 || m21 || m22) {
            tagMATRIX2_2 matrix{m11.value_or(diagonal), m12.value_or(0.0), m21.value_or(0.0), m22.value_or(diagonal)};
            image.SetLTMtx(&matrix, kind);
            return;
        }
    }
}

void WriteMatrix(const CImage& image, Header& header)
{
    tagMATRIX2_2 matrix{};
    const int kind = image.GetLTMtx(&matrix);
    for (const auto& [name, ownKind] : {std::pair{"CD", kCdMatrix}, std::pair{"PC", kPcMatrix}}) {
        const std::string stem(name);
        const std::pair<const char*, double> members[] = {
            {"1_1", matrix.m11}, {"1_2", matrix.m12}, {"2_1", matrix.m21}, {"2_2", matrix.m22}};
        for (const auto& [index, value] : members) {
            if (kind == ownKind) {
                SetIfOther(header, stem + index, value);
            } else {
                header.Remove(stem + index);
            }
        }
    }
}

/// Writes what a getter of the record gives, or removes the card when it gives nothing.
template <class T>
void WriteAxis(int present, const T& value, const std::string& keyword, Header& header)
{
    if (present != 0) {
        SetIfOther(header, keyword, value);
    } else {
        header.Remove(keyword);
    }
}

void WriteAxis(const CImage& image, int axis, Header& header)
{
    double number = 0.0;
    CString text;
    WriteAxis(image.GetCType(axis, &text), text, Numbered("CTYPE", axis + 1), header);
    WriteAxis(image.GetCRPix(axis, &number), number, Numbered("CRPIX", axis + 1), header);
    WriteAxis(image.GetCRVal(axis, &number), number, Numbered("CRVAL", axis + 1), header);
    WriteAxis(image.GetCDelt(axis, &number), number, Numbered("CDELT", axis + 1), header);
    WriteAxis(image.GetCUnit(axis, &text), text, Numbered("CUNIT", axis + 1), header);
}

bool HasCoordinates(const CImage& image)
{
    double number = 0.0;
    CString text;
    tagMATRIX2_2 matrix{};
    bool any = image.GetLTMtx(&matrix) != kNoTransform;
    for (int axis = 0; axis < 3; ++axis) {
        any = any || image.GetCRPix(axis, &number) != 0 || image.GetCRVal(axis, &number) != 0 ||
              image.GetCDelt(axis, &number) != 0 || image.GetCType(axis, &text) != 0 ||
              image.GetCUnit(axis, &text) != 0;
    }
    return any;
}

std::string LevelKeyword(const char* name, int plane)
{
    return plane == 0 ? std::string(name) : Numbered(name, plane + 1);
}

} // namespace

bool IsLayoutKeyword(std::string_view keyword)
{
    return std::any_of(std::begin(kLayout), std::end(kLayout),
                       [=](std::string_view pattern) { return Matches(pattern, keyword); });
}

void AddCards(Header& header, std::string_view text)
{
    std::size_t blanks = 0; // blank cards separate; at the end they only reserve room
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), kCardLength))) {
        const std::string_view card = text.substr(0, kCardLength);
        if (card.find_first_not_of(' ') == card.npos) {
            ++blanks;
        } else if (!IsLayoutKeyword(KeywordOf(card))) {
            for (; blanks > 0; --blanks) {
                header.AddCard("");
            }
            header.AddCard(card);
        }
    }
}

void Inherit(Header& header, const Header& other)
{
    std::set<std::string, std::less<>> own;
    for (const std::string& card : header.Cards()) {
        own.emplace(KeywordOf(card));
    }
    bool taken = false;
    for (const std::string& card : other.Cards()) {
        const std::string_view keyword = KeywordOf(card);
        taken = keyword == "CONTINUE" ? taken : !IsCommentary(keyword) && own.find(keyword) == own.end();
        if (taken) {
            header.AddCard(card);
        }
    }
}

void ReadCoordinates(const Header& header, CImage& image)
{
    for (int axis = 0; axis < 3; ++axis) {
        if (const auto value = header.Number(Numbered("CRPIX", axis + 1))) {
            image.SetCRPix(axis, *value);
        }
        if (const auto value = header.Number(Numbered("CRVAL", axis + 1))) {
            image.SetCRVal(axis, *value);
        }
        if (const auto value = header.Number(Numbered("CDELT", axis + 1))) {
            image.SetCDelt(axis, *value);
        }
        if (const auto value = header.Text(Numbered("CTYPE", axis + 1))) {
            image.SetType(value->c_str(), axis);
        }
        if (const auto value = header.Text(Numbered("CUNIT", axis + 1))) {
            image.SetCUnit(axis, value->c_str());
        }
    }
    ReadMatrix(header, image);
    if (const auto axis = header.Number("DISPAXIS"); axis == 1.0 || axis == 2.0) {
        image.SetDispAxis(static_cast<int>(*axis));
    }
}

void WriteCoordinates(const CImage& image, Header& header)
{
    if (!HasCoordinates(image)) {
        return;
    }
    for (int axis = 0; axis < 3; ++axis) {
        WriteAxis(image, axis, header);
    }
    WriteMatrix(image, header);
    if (int axis = 0; image.GetDispAxis(&axis) != 0 && header.Number("DISPAXIS") != axis) {
        header.Set("DISPAXIS", axis);
    }
}

std::optional<Levels> ReadLevels(const Header& header, int plane)
{
    for (const int source : {plane, 0}) {
        const auto black = header.Number(LevelKeyword("CBLACK", source));
        const auto white = header.Number(LevelKeyword("CWHITE", source));
        if (black && white && *black < *white) {
            return Levels{*black, *white};
        }
    }
    return std::nullopt;
}

void WriteLevels(const CImage& image, Header& header)
{
    for (int plane = 0; plane < 3; ++plane) {
        const std::string black = LevelKeyword("CBLACK", plane);
        const std::string white = LevelKeyword("CWHITE", plane);
        if (image.HasOwnLevel() != 0 && plane < image.GetPlanes()) {
            SetIfOther(header, black, image.GetLevelMin(plane));
            SetIfOther(header, white, image.GetLevelMax(plane));
        } else {
            header.Remove(black);
            header.Remove(white);
        }
    }
}

std::string ToDescription(const Header& header)
{
    std::string text(kFirstLine);
    for (const std::string& card : header.Cards()) {
        text += '\n';
        text.append(card, 0, card.find_last_not_of(' ') + 1);
    }
    return text;
}

Header FromDescription(std::string_view text, std::string_view rowOrder)
{
    Header header;
    const bool cards = text.starts_with(kFirstLine);
    constexpr std::size_t kCommentLength = 72;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
        if (cards) {
            AddCards(header, line.substr(0, kCardLength));
            continue;
        }
        for (; !line.empty(); line.remove_prefix(std::min(line.size(), kCommentLength))) {
            header.AddCard("COMMENT " + std::string(line.substr(0, kCommentLength)));
        }
    }
    if (!header.Has("ROWORDER")) {
        header.Set("ROWORDER", std::string(rowOrder), "order of the rows in the image");
    }
    return header;
}

} // namespace corvane::io
