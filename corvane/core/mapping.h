#pragma once

#include <array>
#include <limits>
#include <variant>

#include "corvane/core/alignment.h"
#include "corvane/platform/export.h"

namespace corvane {

/// How an image is placed onto another frame where a shift, a turn and a scale do not do.
///
/// With u = (x - x0) / size and v = (y - y0) / size, a position is the sum of terms 1, u, v, u^2, uv, v^2, u^3, u^2 v,
/// u v^2, v^3, each times its coefficient. Or, of a plane that is seen aslant, it is the sum of the first three over
/// 1 + tiltU u + tiltV v, and nothing lies where that is not above 0: there are either tilts or terms beyond the third.
struct FieldMap {
    static constexpr int kTerms = 10; ///< up to the third order
    static constexpr int kLinear = 3; ///< terms of an affine map

    std::array<double, kTerms> x{}; ///< coefficients of the position's x [pixels]
    std::array<double, kTerms> y{}; ///< and of its y
    double tiltU = 0.0;
    double tiltV = 0.0;
    double x0 = 0.0;   ///< the middle [pixels of the frame]
    double y0 = 0.0;   ///< [pixels of the frame]
    double size = 1.0; ///< what u and v count in [pixels of the frame]

    /// True for a plane that is seen aslant.
    bool IsTilted() const { return tiltU != 0.0 || tiltV != 0.0; }

    /// Calls visit with a function that maps pixels, chosen once for many of them.
    template <class Visit>
    void WithMap(Visit visit) const
    {
        if (IsTilted()) {
            visit([m = *this](double px, double py) {
                const double u = (px - m.x0) / m.size;
                const double v = (py - m.y0) / m.size;
                const double below = 1.0 + m.tiltU * u + m.tiltV * v;
                const double factor = below > 0.0 ? 1.0 / below : std::numeric_limits<double>::quiet_NaN();
                return Position{(m.x[0] + m.x[1] * u + m.x[2] * v) * factor,
                                (m.y[0] + m.y[1] * u + m.y[2] * v) * factor};
            });
        } else {
            visit([m = *this](double px, double py) {
                const double u = (px - m.x0) / m.size;
                const double v = (py - m.y0) / m.size;
                const auto sum = [=](const std::array<double, kTerms>& c) {
                    const double one = c[1] + v * (c[4] + v * c[8]);
                    return c[0] + v * (c[2] + v * (c[5] + v * c[9])) + u * (one + u * (c[3] + v * c[7] + u * c[6]));
                };
                return Position{sum(m.x), sum(m.y)};
            });
        }
    }
};

/// Where positions of a frame lie in an image that is placed onto it.
class CORVANE_VISIBLE Mapping {
public:
    Mapping(const Alignment& alignment = {}) : map_(alignment) {} // NOLINT(google-explicit-constructor): it is one
    Mapping(const FieldMap& map) : map_(map) {}                   // NOLINT(google-explicit-constructor)

    /// The alignment that this is; null for another map.
    const Alignment* AsAlignment() const { return std::get_if<Alignment>(&map_); }
    bool IsShift() const { return AsAlignment() != nullptr && AsAlignment()->IsShift(); }
    /// A shift by whole columns: positions lie between no two of them.
    bool KeepsColumns() const;
    /// Nothing is moved.
    bool IsIdentity() const { return IsShift() && AsAlignment()->dx == 0.0 && AsAlignment()->dy == 0.0; }
    /// Distances in the image over those of the frame, about the middle of the map.
    double Scale() const;

    /// Where position (x, y) of the frame lies in the image; NaN where it does not.
    Position Map(double x, double y) const
    {
        Position at{};
        WithMap([&](auto map) { at = map(x, y); });
        return at;
    }
    /// The position of the frame that lies there in the image.
    Position Inverse(const Position& at) const;

    /// Calls visit with a function that maps pixels as `Map` does, chosen once for many of them.
    template <class Visit>
    void WithMap(Visit visit) const
    {
        std::visit([&](const auto& map) { map.WithMap(visit); }, map_);
    }

    /// From one number to another.
    struct Range {
        double low;
        double high;
    };
    /// Bounds of the image's y for columns `x` to `x + count - 1` of row y, but for rounding; NaN where none lie in it.
    Range RangeOfY(int x, int y, int count) const;

    /// The same from a frame whose first pixel lies at (left, top) of this one.
    Mapping From(double left, double top) const;
    /// The same from a frame with `scale` pixels to one of this one. Positions are those of the middles of pixels; the
    /// first one's corner is what both frames have in common.
    Mapping Scaled(double scale) const;

private:
    std::variant<Alignment, FieldMap> map_;
};

} // namespace corvane
