#pragma once

#include <cmath>

#include "corvane/core/display_scale.h"
#include "corvane/core/point.h"

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

    /// Shift and turn, the turn in degrees, positive clockwise on screen. Sine and cosine are the system's, so a turned
    /// position may differ in its last bit from one system's mathematical library to another's.
    static Alignment Turned(double shiftX, double shiftY, double degrees, const CfPoint& centre)
    {
        const double radians = degrees * kDegree;
        return {shiftX, shiftY, std::sin(radians), std::cos(radians), 1.0, centre};
    }

    bool IsShift() const { return cosine == 1.0 && sine == 0.0 && scale == 1.0; }

    /// Where pixel (x, y) of the frame lies in the image.
    Position Map(int x, int y) const
    {
        if (IsShift()) {
            return {x - dx, y - dy};
        }
        if (cosine == 1.0 && sine == 0.0) {
            return {(x - centreX - dx) * scale + centreX, (y - centreY - dy) * scale + centreY};
        }
        const double a = x - centreX - dx;
        const double b = centreY - y + dy;
        return {(a * cosine - b * sine) * scale + centreX, centreY - (a * sine + b * cosine) * scale};
    }
};

} // namespace corvane
