#include "corvane/draw/lettering.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "corvane/core/display_scale.h"
#include "corvane/core/turn.h"
#include "corvane/draw/glyphs.h"

namespace corvane {
namespace {

constexpr double kMostPieces = 256.0; // of a curve

struct Spot {
    double x;
    double y;
};

Spot Middle(const Spot& a, const Spot& b)
{
    return {(a.x + b.x) * 0.5, (a.y + b.y) * 0.5};
}

/// Bytes that go on with a character of UTF-8: with them a letter that the font lacks is still one box.
bool Continues(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// Calls visit(glyph, x) for each character, x in units of the grid. Returns the x behind the last.
template <class Visit>
int ForEachGlyph(const char* text, Visit visit)
{
    int x = 0;
    for (; *text != '\0'; ++text) {
        if (!Continues(*text)) {
            const Glyph& glyph = GlyphOf(*text);
            visit(glyph, x);
            x += glyph.width + kBetween;
        }
    }
    return x;
}

int Digit(char c)
{
    return c <= '9' ? c - '0' : c - 'A' + 10;
}

/// Follows a pen along strokes, and keeps the straight pieces that it draws.
class PenPath {
public:
    explicit PenPath(Segments& segments) : segments_(segments) {}

    void MoveTo(const Spot& spot) { at_ = spot; }

    void LineTo(const Spot& spot)
    {
        segments_.push_back({at_.x, at_.y, spot.x, spot.y});
        at_ = spot;
    }

    void CurveTo(const Spot& control, const Spot& end)
    {
        const Spot start = at_;
        const double bendX = start.x - 2.0 * control.x + end.x;
        const double bendY = start.y - 2.0 * control.y + end.y;
        const double bend = std::sqrt(bendX * bendX + bendY * bendY);
        const int pieces = static_cast<int>(std::min(kMostPieces, std::ceil(2.0 * std::sqrt(bend)) + 1.0));
        for (int i = 1; i <= pieces; ++i) {
            const double t = static_cast<double>(i) / pieces;
            const double u = 1.0 - t;
            LineTo({u * u * start.x + 2.0 * u * t * control.x + t * t * end.x,
                    u * u * start.y + 2.0 * u * t * control.y + t * t * end.y});
        }
    }

private:
    Segments& segments_;
    Spot at_{};
};

/// Draws one stroke, whose points `toPixels` places.
template <class ToPixels>
void DrawStroke(std::string_view stroke, PenPath& pen, ToPixels toPixels)
{
    std::optional<Spot> control;
    bool isFirst = true;
    while (!stroke.empty()) {
        const bool isControl = stroke.front() == '.';
        stroke.remove_prefix(isControl ? 1 : 0);
        const Spot spot = toPixels(Digit(stroke[0]), Digit(stroke[1]));
        stroke.remove_prefix(2);
        if (isFirst) {
            pen.MoveTo(spot);
            if (stroke.empty()) {
                pen.LineTo(spot);
            }
        } else if (control) {
            pen.CurveTo(*control, isControl ? Middle(*control, spot) : spot);
        } else if (!isControl) {
            pen.LineTo(spot);
        }
        control = isControl ? std::optional(spot) : std::nullopt;
        isFirst = false;
    }
}

} // namespace

double TextWidth(const char* text)
{
    const int end = ForEachGlyph(text, [](const Glyph&, int) {});
    return static_cast<double>(std::max(end - kBetween, 0)) / kCapitals;
}

Segments TextSegments(const char* text, const TextPlace& place)
{
    const auto [sine, cosine] = SineAndCosine(place.angle * kDegree);
    const double unit = std::fabs(place.height) / kCapitals;
    const double down = place.height < 0.0 ? -1.0 : 1.0;
    const double start = place.before * TextWidth(text) * kCapitals;
    Segments segments;
    PenPath pen(segments);
    ForEachGlyph(text, [&, s = sine, c = cosine](const Glyph& glyph, int left) {
        const auto toPixels = [&](int x, int y) {
            const double right = (left + x - start) * unit;
            const double up = (y - kBaseline) * unit;
            return Spot{place.x + right * c + up * s, place.y + down * (right * s - up * c)};
        };
        for (std::string_view rest = glyph.strokes; !rest.empty();) {
            const std::string_view stroke = rest.substr(0, rest.find(' '));
            DrawStroke(stroke, pen, toPixels);
            rest.remove_prefix(std::min(stroke.size() + 1, rest.size()));
        }
    });
    return segments;
}

} // namespace corvane
