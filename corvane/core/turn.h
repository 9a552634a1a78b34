#pragma once

#include "corvane/platform/export.h"

// Sine, cosine and their inverse for what is calculated once per image or row. The system's are fast, but differ in the
// last digit from one system to the next. These are plain arithmetic, the same bits everywhere, with more digits than a
// double has, and rounded once: they are the double next to the result, unless that lies half-way between two doubles
// to some 25 digits.

namespace corvane {

/// What turns a point about another.
struct SineCosine {
    double sine;
    double cosine;
};

/// Sine and cosine of an angle [radians]; NaN for NaN and infinities, and the sign of zeros stays.
///
/// Beyond 2^30, either way, whole turns are taken off with pi as a double has it. That moves an angle by less than half
/// of what lies between it and the next double.
CORVANE_VISIBLE SineCosine SineAndCosine(double radians);

inline double Sine(double radians)
{
    return SineAndCosine(radians).sine;
}

inline double Cosine(double radians)
{
    return SineAndCosine(radians).cosine;
}

/// The angle from the direction of x to the point (x, y) [radians, -pi..pi]. NaN when either is; zeros and infinities
/// give what the C standard's atan2 does: the sign of y counts for zeros too, and infinities lie on an axis or
/// diagonal.
CORVANE_VISIBLE double Direction(double y, double x);

} // namespace corvane
