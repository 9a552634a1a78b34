#pragma once

/// Elementary functions in plain arithmetic, beside `corvane::Exp`. The system's mathematical library may round
/// differently from one machine to the next; these give the same bits wherever double is IEEE 754, which is what makes
/// a night repeatable.
namespace corvane::night {

/// Natural logarithm of a positive normal number, within 2 units in the last place away from 1.
double Log(double x);

struct SineCosine {
    double sine;
    double cosine;
};
/// Sine and cosine of an angle [degrees], within 1e-13.
SineCosine TurnBy(double degrees);

} // namespace corvane::night
