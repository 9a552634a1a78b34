#include "io/sky.h"

#include <numbers>

#include "corvane/core/turn.h"
#include "io/formats/sip.h"

namespace corvane::io {
namespace {

using Matrix = tagMATRIX2_2;

Matrix Product(const Matrix& a, const Matrix& b)
{
    return {a.m11 * b.m11 + a.m12 * b.m21, a.m11 * b.m12 + a.m12 * b.m22, a.m21 * b.m11 + a.m22 * b.m21,
            a.m21 * b.m12 + a.m22 * b.m22};
}

Matrix Inverse(const Matrix& m)
{
    const double determinant = m.m11 * m.m22 - m.m12 * m.m21;
    return {m.m22 / determinant, -m.m12 / determinant, -m.m21 / determinant, m.m11 / determinant};
}

bool HasCoordinates(const WorldCoordinates& coordinates)
{
    const auto isKnown = [](const AxisCoordinates& axis) {
        return axis.referencePixel || axis.increment || axis.referenceValue;
    };
    return coordinates.matrixKind != kNoTransform || isKnown(coordinates.axes[0]) || isKnown(coordinates.axes[1]);
}

/// Puts the turn that CROTA2 (or CROTA1) states, where there is no matrix, into one, and takes the cards away: beside a
/// matrix they have no meaning.
void ReplaceRotation(Header& header, WorldCoordinates& coordinates)
{
    const double degrees = header.Number("CROTA2").value_or(header.Number("CROTA1").value_or(0.0));
    if (coordinates.matrixKind == kNoTransform && degrees != 0.0) {
        const double dx = coordinates.axes[0].increment.value_or(1.0);
        const double dy = coordinates.axes[1].increment.value_or(1.0);
        const auto [sine, cosine] = SineAndCosine(degrees * std::numbers::pi / 180.0);
        coordinates.matrix = {dx * cosine, -dy * sine, dx * sine, dy * cosine};
        coordinates.matrixKind = kCdMatrix;
        coordinates.axes[0].increment.reset();
        coordinates.axes[1].increment.reset();
    }
    header.Remove("CROTA1");
    header.Remove("CROTA2");
}

void MoveReferencePixel(const PixelMap& map, WorldCoordinates& coordinates)
{
    // Reference pixels count from 1.
    const double x = coordinates.axes[0].referencePixel.value_or(0.0) - 1.0;
    const double y = coordinates.axes[1].referencePixel.value_or(0.0) - 1.0;
    coordinates.axes[0].referencePixel = map.linear.m11 * x + map.linear.m12 * y + map.x0 + 1.0;
    coordinates.axes[1].referencePixel = map.linear.m21 * x + map.linear.m22 * y + map.y0 + 1.0;
}

/// Scales the increments, which have no say beside a CD matrix but should not contradict it.
void MoveIncrements(const Matrix& back, WorldCoordinates& coordinates)
{
    const bool isAlone = coordinates.matrixKind == kNoTransform;
    const double factors[] = {back.m11, back.m22};
    for (const std::size_t i : {0, 1}) {
        std::optional<double>& increment = coordinates.axes[i].increment;
        if (increment || isAlone) {
            increment = increment.value_or(1.0) * factors[i];
        }
    }
}

void MoveScale(const Matrix& back, WorldCoordinates& coordinates)
{
    const bool isAlongAxes = back.m12 == 0.0 && back.m21 == 0.0;
    if (isAlongAxes && coordinates.matrixKind != kPcMatrix) {
        MoveIncrements(back, coordinates);
    } else if (coordinates.matrixKind == kNoTransform) {
        coordinates.matrixKind = kPcMatrix;
    }
    if (coordinates.matrixKind != kNoTransform) {
        coordinates.matrix = Product(coordinates.matrix, back);
    }
}

/// Beginnings of the keywords that tell coordinates; a digit or an underscore follows where there is more.
constexpr const char* kCoordinateCards[] = {"CTYPE",   "CRPIX",   "CRVAL", "CDELT",   "CUNIT",    "CROTA",   "CD",
                                            "PC",      "PV",      "A_",    "B_",      "AP_",      "BP_",     "LONPOLE",
                                            "LATPOLE", "EQUINOX", "EPOCH", "RADESYS", "RADECSYS", "WCSAXES", "WCSNAME"};

/// The keyword of a card that tells coordinates; empty for others.
std::string CoordinateKeyword(const std::string& card)
{
    std::string keyword = card.substr(0, card.find_first_of(" =", 0));
    for (const std::string stem : kCoordinateCards) {
        const std::string rest = keyword.starts_with(stem) ? keyword.substr(stem.size()) : "-";
        const bool isWord = stem.size() > 5 || stem == "EPOCH";
        const bool isNumbered = rest == "ORDER" || rest == "DMAX" ||
                                (!rest.empty() && rest.find_first_not_of("0123456789_") == std::string::npos);
        if (isWord ? rest.empty() : isNumbered) {
            return keyword;
        }
    }
    return "";
}

} // namespace

void TakeCoordinates(const Header& from, Header& to)
{
    const std::vector<std::string> before = to.Cards();
    for (const std::string& card : before) {
        if (const std::string keyword = CoordinateKeyword(card); !keyword.empty()) {
            to.Remove(keyword);
        }
    }
    for (const std::string& card : from.Cards()) {
        if (!CoordinateKeyword(card).empty()) {
            to.AddCard(card);
        }
    }
}

void CarryCoordinates(const PixelMap& map, Frame& frame, CImage& result)
{
    WorldCoordinates coordinates = frame.image.GetCoordinates();
    if (HasCoordinates(coordinates)) {
        ReplaceRotation(frame.header, coordinates);
        MoveReferencePixel(map, coordinates);
        MoveScale(Inverse(map.linear), coordinates);
        CarryDistortion(map.linear, Inverse(map.linear), frame.header);
    }
    result.SetCoordinates(coordinates);
}

} // namespace corvane::io
