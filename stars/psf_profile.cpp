#include "stars/psf_profile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "corvane/core/exponential.h"
#include "corvane/core/power.h"
#include "corvane/core/turn.h"

namespace corvane::stars {

namespace {

constexpr double kLnOfTwo = 0x1.62e42fefa39efp-1;
constexpr double kDegreesOfRadian = 57.29577951308232;
constexpr double kRound = 1e-9;   // difference of the axes over their mean, below which the angle says nothing
constexpr double kNoAngle = 90.0; // degrees: all angles are as good

using PsfGradient = std::array<double, 4>;

/// The error of something that changes so with the unknowns.
double ErrorOf(const PsfGradient& gradient, const PsfCovariance& covariance)
{
    double variance = 0.0;
    for (std::size_t i = 0; i < gradient.size(); ++i) {
        for (std::size_t j = 0; j < gradient.size(); ++j) {
            variance += gradient[i] * covariance[i][j] * gradient[j];
        }
    }
    return std::sqrt(std::max(variance, 0.0));
}

/// The full width of the axis whose square is 1 / (mean + sign * spread), which are those of the half's two axes.
Measured WidthOfAxis(double sign, const PsfProfile& profile, double spread, const PsfCovariance& covariance)
{
    const double inverse = 0.5 * (profile.xx + profile.yy) + sign * spread;
    const double width = 2.0 / std::sqrt(inverse);
    const double byInverse = -0.5 * width / inverse;
    const double lean = sign * 0.25 * (profile.xx - profile.yy) / spread;
    const PsfGradient gradient{byInverse * (0.5 + lean), byInverse * sign * profile.xy / spread,
                               byInverse * (0.5 - lean), 0.0};
    return {width, ErrorOf(gradient, covariance)};
}

} // namespace

PsfCurve::PsfCurve(double perBeta) : perBeta_(perBeta), atHalf_(Expm1(perBeta * kLnOfTwo)) {}

PsfSlopes PsfCurve::At(double half) const
{
    const double t = perBeta_;
    if (t == 0.0) {
        const double value = Exp(-kLnOfTwo * half);
        return {value, -kLnOfTwo * value, 0.0};
    }
    const double k = atHalf_;
    const double sum = 1.0 + k * half;
    const double log = Log1p(k * half);
    const double value = Exp(-log / t);
    return {value, -value * k / (t * sum), value * (log / (t * t) - half * (k + 1.0) * kLnOfTwo / (t * sum))};
}

double PsfProfile::At(double dx, double dy) const
{
    return PsfCurve(perBeta).At(xx * dx * dx + 2.0 * xy * dx * dy + yy * dy * dy).value;
}

PsfWidths WidthsOf(const PsfProfile& profile, const PsfCovariance& covariance)
{
    const double half = 0.5 * (profile.xx - profile.yy);
    const double square = half * half + profile.xy * profile.xy;
    const double spread = std::max(std::sqrt(square), kRound * (profile.xx + profile.yy));
    PsfWidths widths;
    widths.major = WidthOfAxis(-1.0, profile, spread, covariance);
    widths.minor = WidthOfAxis(1.0, profile, spread, covariance);
    const double toShortest = 0.5 * kDegreesOfRadian * Direction(profile.xy, half);
    widths.angle.value = toShortest > 0.0 ? toShortest - 90.0 : toShortest + 90.0;
    const double perSquare = 0.5 * kDegreesOfRadian / (spread * spread);
    const PsfGradient turn{-0.5 * profile.xy * perSquare, half * perSquare, 0.5 * profile.xy * perSquare, 0.0};
    widths.angle.error = std::min(ErrorOf(turn, covariance), kNoAngle);
    if (profile.perBeta > 0.0) {
        const double beta = 1.0 / profile.perBeta;
        widths.beta = {beta, beta * beta * std::sqrt(std::max(covariance[3][3], 0.0))};
    }
    return widths;
}

} // namespace corvane::stars
