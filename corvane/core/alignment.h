#pragma once

#include "corvane/core/display_scale.h"
#include "corvane/core/point.h"
#include "corvane/core/turn.h"

namespace corvane {

/// A position between the samples of an image.
struct Position {
    double x;
    double y;
};

/// How an image is placed onto another frame: shift, turn about the image's standard centre, scale.
struct Alignment {
    double dx = 0.0; ///< shift to the right [pixels]
    double dy = 0.0; ///< shift downwards [pixels]
    double sine = 0.0;
    double cosine = 1.0;
    double scale = 1.0;
    double centreX = 0.0;
    double centreY = 0.0;

    Alignment() = default;
    Alignment(double shiftX, double shiftY, double sinA, double cosA, double factor, const CfPoint& centre)
        : dx(shiftX), dy(shiftY), sine(sinA), cosine(cosA), scale(factor), centreX(centre.x), centreY(centre.y)
    {}

    /// Shift and turn, the turn in degrees, positive clockwise on screen.
    static Alignment Turned(double shiftX, double shiftY, double degrees, const CfPoint& centre)
    {
        const auto [sine, cosine] = SineAndCosine(degrees * kDegree);
        return {shiftX, shiftY, sine, cosine, 1.0, centre};
    }

    bool IsShift() const { return cosine == 1.0 && sine == 0.0 && scale == 1.0; }

    /// Where position (x, y) of the frame lies in the image.
    Position Map(double x, double y) const
    {
        Position at{};
        WithMap([&](auto map) { at = map(x, y); });
        return at;
    }

    /// Where position (x, y) of the image lies in the frame.
    Position Back(double x, double y) const
    {
        const double a = (x - centreX) / scale;
        const double b = (centreY - y) / scale;
        return {a * cosine + b * sine + centreX + dx, centreY + dy - (b * cosine - a * sine)};
    }

    /// Calls visit with a function that maps pixels as `Map` does, chosen once for many of them.
    template <class Visit>
    void WithMap(Visit visit) const
    {
        if (IsShift()) {
            visit([shiftX = dx, shiftY = dy](double x, double y) { return Position{x - shiftX, y - shiftY}; });
        } else if (cosine == 1.0 && sine == 0.0) {
            visit([m = *this](double x, double y) {
                return Position{(x - m.centreX - m.dx) * m.scale + m.centreX,
                                (y - m.centreY - m.dy) * m.scale + m.centreY};
            });
        } else {
            visit([m = *this](double x, double y) {
                const double a = x - m.centreX - m.dx;
                const double b = m.centreY - y + m.dy;
                return Position{(a * m.cosine - b * m.sine) * m.scale + m.centreX,
                                m.centreY - (a * m.sine + b * m.cosine) * m.scale};
            });
        }
    }
};

} // namespace corvane
