#include "corvane/core/turn.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/double_double.h"
#include "corvane/core/exponential.h"

namespace corvane {
namespace {

/// An angle as whole quarter turns and a rest of at most an eighth of a turn, either way.
struct QuarterTurns {
    int count; ///< 0..3, full turns left out
    DoubleDouble rest;
};

struct ExactSineCosine {
    DoubleDouble sine;
    DoubleDouble cosine;
};

/// No double below 2^30 comes closer to a multiple of pi / 2, but 0, than 2^-61: of pi / 2 more digits are needed than
/// two doubles have.
QuarterTurns Divide(double radians)
{
    constexpr double kMostExact = 0x1p30;
    constexpr double kTurn = 0x1.921fb54442d18p+2;
    constexpr double kPerQuarter = 0x1.45f306dc9c883p-1;
    constexpr double kQuarter[] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, -0x1.f1976b7ed8fbcp-110};

    const double angle = std::fabs(radians) > kMostExact ? std::fmod(radians, kTurn) : radians;
    const double n = NearestWhole(angle * kPerQuarter).Value();
    const DoubleDouble rest = angle - ExactProduct(n, kQuarter[0]) - ExactProduct(n, kQuarter[1]) - n * kQuarter[2];
    return {static_cast<int>(n) & 3, rest};
}

/// The Taylor series, for an eighth of a turn at most. Its last terms weigh so little that a double's digits will do.
ExactSineCosine Series(const DoubleDouble& angle)
{
    constexpr int kTerms = 13;     // the next one is below 4e-33
    constexpr int kExactTerms = 6; // the others add up to less than 1e-11
    const DoubleDouble square = angle * angle;
    double sineRest = 1.0;
    double cosineRest = 1.0;
    for (int i = kTerms; i > kExactTerms; --i) {
        sineRest = 1.0 - square.high * sineRest / ((2 * i) * (2 * i + 1));
        cosineRest = 1.0 - square.high * cosineRest / ((2 * i - 1) * (2 * i));
    }
    DoubleDouble sine = sineRest;
    DoubleDouble cosine = cosineRest;
    for (int i = kExactTerms; i > 0; --i) {
        sine = 1.0 - square * sine / ((2 * i) * (2 * i + 1));
        cosine = 1.0 - square * cosine / ((2 * i - 1) * (2 * i));
    }
    return {angle * sine, cosine};
}

ExactSineCosine ExactSines(double radians)
{
    const QuarterTurns turns = Divide(radians);
    const auto [sine, cosine] = Series(turns.rest);
    switch (turns.count) {
    case 0:
        return {sine, cosine};
    case 1:
        return {cosine, -sine};
    case 2:
        return {-sine, -cosine};
    default:
        return {-cosine, sine};
    }
}

/// The direction of a point whose coordinates are far from the ends of the range of doubles. The system's own is turned
/// by what it is off: an angle so small that it is its tangent.
double CorrectedDirection(double y, double x)
{
    const double about = std::atan2(y, x);
    const auto [sine, cosine] = ExactSines(about);
    const DoubleDouble across = y * cosine - x * sine;
    const double along = x * cosine.high + y * sine.high;
    return about + across.high / along;
}

} // namespace

SineCosine SineAndCosine(double radians)
{
    if (radians == 0.0) {
        return {radians, 1.0};
    }
    if (!std::isfinite(radians)) {
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        return {kNaN, kNaN};
    }
    const auto [sine, cosine] = ExactSines(radians);
    return {sine.high, cosine.high};
}

double Direction(double y, double x)
{
    if (y == 0.0 || !std::isfinite(y) || !std::isfinite(x)) {
        return std::atan2(y, x); // one of few numbers, which every system knows
    }
    if (std::fabs(y) < x * 0x1p-60) {
        return y / x; // so small that it is its tangent; scaled, y might lose digits
    }
    const double size = std::max(std::fabs(y), std::fabs(x));
    const double scale = size > 0x1p500 ? 0x1p-600 : (size < 0x1p-400 ? 0x1p600 : 1.0);
    return CorrectedDirection(y * scale, x * scale);
}

} // namespace corvane
