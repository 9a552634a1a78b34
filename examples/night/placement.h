#pragma once

#include "examples/night/portable_math.h"

namespace corvane::night {

struct Point {
    double x;
    double y;
};

/// How a light is placed onto the first one: shifted by (dx, dy), turned about a centre, as the image library's aligned
/// sampling takes it. Stars of the light stand where the field has carried them, so a field that drifts to the right
/// gives a negative dx.
struct Placement {
    double dx = 0.0;      ///< [pixels]
    double dy = 0.0;      ///< [pixels]
    double degrees = 0.0; ///< positive turns the light clockwise on screen
    double centreX = 0.0;
    double centreY = 0.0;

    /// Where the light shows what stands at a point of the first light.
    Point ToLight(Point first) const
    {
        const auto [s, c] = TurnBy(degrees);
        const double a = first.x - centreX - dx;
        const double b = first.y - centreY - dy;
        return {centreX + a * c + b * s, centreY + b * c - a * s};
    }
    /// Where the first light shows what stands at a point of the light.
    Point ToFirst(Point light) const
    {
        const auto [s, c] = TurnBy(degrees);
        const double a = light.x - centreX;
        const double b = light.y - centreY;
        return {centreX + dx + a * c - b * s, centreY + dy + b * c + a * s};
    }
};

} // namespace corvane::night
