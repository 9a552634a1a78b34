#include "corvane/tone/hyperbolic_stretch.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/power.h"

namespace corvane {
namespace {

// The functions T(u), but for factors above 0 that cancel, with their slopes and inverses.

/// 1 - exp(-d u)
struct ExponentialBend {
    double d;

    double operator()(double u) const { return -Expm1(-d * u); }
    double Slope(double u) const { return d * Exp(-d * u); }
    double Inverse(double t) const { return -Log1p(-t) / d; }
};

/// ln(1 + d u)
struct LogarithmicBend {
    double d;

    double operator()(double u) const { return Log1p(d * u); }
    double Slope(double u) const { return d / (1.0 + d * u); }
    double Inverse(double t) const { return Expm1(t) / d; }
};

/// (1 + d u)^power - 1, or the negative of that, which rises with a power below 0.
struct PowerBend {
    double d;
    double power;
    double sign = power < 0.0 ? -1.0 : 1.0;

    double operator()(double u) const { return sign * Expm1(power * Log1p(d * u)); }
    double Slope(double u) const { return sign * power * d * Exp((power - 1.0) * Log1p(d * u)); }
    double Inverse(double t) const { return Expm1(Log1p(sign * t) / power) / d; }
};

/// f(x), and its inverse, both from 0..1 to 0..1.
template <class Bend>
class HyperbolicCurve {
public:
    HyperbolicCurve(const Bend& bend, const HyperbolicShape& shape)
        : bend_(bend), sp_(shape.sp), lp_(shape.lp), hp_(shape.hp), atLp_(-bend(sp_ - lp_)), atHp_(bend(hp_ - sp_)),
          slopeBelow_(bend.Slope(sp_ - lp_)), slopeAbove_(bend.Slope(hp_ - sp_)), start_(Raw(0.0)),
          range_(Raw(1.0) - start_), perRange_(1.0 / range_)
    {}

    double operator()(double x) const { return (Raw(x) - start_) * perRange_; }

    double Inverse(double y) const
    {
        const double v = y * range_ + start_;
        const double within = std::min(std::max(v, atLp_), atHp_);
        const double away = std::min(1.0, bend_.Inverse(std::fabs(within))); // NaN, at the end of T, becomes 1
        const double slope = within < 0.0 ? slopeBelow_ : slopeAbove_;
        const double beyond = slope > 0.0 ? (v - within) / slope : 0.0;
        const double x = sp_ + (within < 0.0 ? -away : away) + beyond;
        return std::max(0.0, std::min(1.0, x));
    }

private:
    /// Before it is shifted and scaled.
    double Raw(double x) const
    {
        const double within = std::min(std::max(x, lp_), hp_);
        const double bent = bend_(std::fabs(within - sp_));
        const double slope = x < sp_ ? slopeBelow_ : slopeAbove_;
        return (within < sp_ ? -bent : bent) + slope * (x - within);
    }

    Bend bend_;
    double sp_;
    double lp_;
    double hp_;
    double atLp_;
    double atHp_;
    double slopeBelow_;
    double slopeAbove_;
    double start_;
    double range_;
    double perRange_;
};

template <class Bend>
StretchFunction Bent(const Bend& bend, const HyperbolicShape& shape)
{
    const HyperbolicCurve<Bend> curve(bend, shape);
    return shape.inverse ? StretchBy([curve](double y) { return curve.Inverse(y); }) : StretchBy(curve);
}

} // namespace

StretchFunction HyperbolicStretch(const HyperbolicShape& shape)
{
    constexpr double kNone = 1e-12; // a D that bends nothing, and a b that is like 0
    if (shape.d < kNone) {
        return StretchBy([](double x) { return x; });
    }
    if (std::fabs(shape.b) < kNone) {
        return Bent(ExponentialBend{shape.d}, shape);
    }
    if (shape.b == -1.0) {
        return Bent(LogarithmicBend{shape.d}, shape);
    }
    const double power = shape.b > 0.0 ? -1.0 / shape.b : (shape.b + 1.0) / shape.b;
    return Bent(PowerBend{std::fabs(shape.b) * shape.d, power}, shape);
}

} // namespace corvane
