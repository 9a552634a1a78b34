#include "corvane/core/mapping.h"

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

constexpr double kUnbounded = std::numeric_limits<double>::infinity();
constexpr int kInverseRounds = 50;
constexpr double kMet = 1e-22; // square of a distance [pixels^2]

/// What the first terms make of a distance; a tilt adds to it in the middle.
struct Slopes {
    double xu, xv, yu, yv;

    explicit Slopes(const FieldMap& m)
        : xu((m.x[1] - m.x[0] * m.tiltU) / m.size), xv((m.x[2] - m.x[0] * m.tiltV) / m.size),
          yu((m.y[1] - m.y[0] * m.tiltU) / m.size), yv((m.y[2] - m.y[0] * m.tiltV) / m.size)
    {}
    double Determinant() const { return xu * yv - xv * yu; }
};

Position Inverse(const Alignment& m, const Position& at)
{
    return m.Back(at.x, at.y);
}

/// Goes on by the slopes in the middle until the place is met: what bends is little.
Position Inverse(const FieldMap& m, const Position& at)
{
    const Slopes slopes(m);
    const double determinant = slopes.Determinant();
    Position found{m.x0, m.y0};
    m.WithMap([&](auto map) {
        for (int round = 0; round < kInverseRounds; ++round) {
            const Position there = map(found.x, found.y);
            const double x = at.x - there.x;
            const double y = at.y - there.y;
            if (x * x + y * y < kMet) {
                break;
            }
            found.x += (slopes.yv * x - slopes.xv * y) / determinant;
            found.y += (slopes.xu * y - slopes.yu * x) / determinant;
        }
    });
    return found;
}

/// How far a curve may leave the line through its ends: an eighth of the length's square, times the most it bends.
double Sag(const FieldMap& m, double from, double to, double v)
{
    const double bend =
        std::fabs(2.0 * (m.y[3] + m.y[7] * v)) + 6.0 * std::fabs(m.y[6]) * std::max(std::fabs(from), std::fabs(to));
    return (to - from) * (to - from) / 8.0 * bend;
}

double RoomAbout(const Alignment&, int, int, int)
{
    return 0.0; // positions move along a line
}

double RoomAbout(const FieldMap& m, int x, int y, int count)
{
    const double from = (x - m.x0) / m.size;
    const double to = (x + count - 1 - m.x0) / m.size;
    const double v = (y - m.y0) / m.size;
    const double a = 1.0 + m.tiltU * from + m.tiltV * v;
    const double b = 1.0 + m.tiltU * to + m.tiltV * v;
    return (a > 0.0) != (b > 0.0) ? kUnbounded : Sag(m, from, to, v);
}

} // namespace

bool Mapping::KeepsColumns() const
{
    return IsShift() && AsAlignment()->dx == std::floor(AsAlignment()->dx);
}

double Mapping::Scale() const
{
    const Alignment* const alignment = AsAlignment();
    return alignment != nullptr ? alignment->scale
                                : std::sqrt(std::fabs(Slopes(std::get<FieldMap>(map_)).Determinant()));
}

Position Mapping::Inverse(const Position& at) const
{
    return std::visit([&](const auto& map) { return corvane::Inverse(map, at); }, map_);
}

Mapping::Range Mapping::RangeOfY(int x, int y, int count) const
{
    const double room = std::visit([&](const auto& map) { return RoomAbout(map, x, y, count); }, map_);
    if (room == kUnbounded) {
        return {-kUnbounded, kUnbounded};
    }
    const double first = Map(x, y).y;
    const double last = Map(x + count - 1, y).y;
    return {std::min(first, last) - room, std::max(first, last) + room};
}

Mapping Mapping::From(double left, double top) const
{
    Mapping moved = *this;
    if (Alignment* const alignment = std::get_if<Alignment>(&moved.map_)) {
        alignment->dx -= left;
        alignment->dy -= top;
    } else {
        std::get<FieldMap>(moved.map_).x0 -= left;
        std::get<FieldMap>(moved.map_).y0 -= top;
    }
    return moved;
}

Mapping Mapping::Scaled(double scale) const
{
    if (scale == 1.0) {
        return *this;
    }
    const double corner = 0.5 - 0.5 / scale;
    if (const Alignment* const before = AsAlignment()) {
        Alignment alignment = *before;
        alignment.dx = (alignment.centreX + alignment.dx + corner) * scale - alignment.centreX;
        alignment.dy = (alignment.centreY + alignment.dy + corner) * scale - alignment.centreY;
        alignment.scale /= scale;
        return alignment;
    }
    FieldMap map = std::get<FieldMap>(map_);
    map.x0 = (map.x0 + corner) * scale;
    map.y0 = (map.y0 + corner) * scale;
    map.size *= scale;
    return map;
}

} // namespace corvane
