#include "stars/gaussian_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "corvane/core/exponential.h"
#include "stars/normal_equations.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kUnknowns = 5; // peak, x, y, sigma and sky
constexpr std::size_t kPeak = 0;
constexpr std::size_t kX = 1;
constexpr std::size_t kY = 2;
constexpr std::size_t kSigma = 3;
constexpr std::size_t kSky = 4;
constexpr int kMostSteps = 50;
constexpr double kSettledStep = 1e-5; // of sigma
constexpr double kDamping = 1e-3;
constexpr double kEase = 0.1;        // of the damping, after a step that helped
constexpr double kTighten = 10;      // after one that did not
constexpr double kRadius = 4.7;      // sigmas: two FWHM
constexpr double kLeastRadius = 3.0; // pixels

using Vector = std::array<double, kUnknowns>;

struct Sample {
    double x;
    double y;
    double value;
};

std::vector<Sample> SamplesWithin(const Stamp& stamp, double radius)
{
    std::vector<Sample> samples;
    for (int dy = -stamp.Reach(); dy <= stamp.Reach(); ++dy) {
        for (int dx = -stamp.Reach(); dx <= stamp.Reach(); ++dx) {
            const int i = dx + stamp.Reach();
            if (dx * dx + dy * dy <= radius * radius && stamp.Gaps(dy)[i] == 0.0F) {
                samples.push_back({1.0 * dx, 1.0 * dy, stamp.Row(dy)[i]});
            }
        }
    }
    return samples;
}

using GaussianEquations = NormalEquations<kUnknowns>;

GaussianEquations GaussianEquationsAt(const std::vector<Sample>& samples, const Vector& at)
{
    GaussianEquations sums;
    const double perVariance = 1.0 / (at[kSigma] * at[kSigma]);
    for (const Sample& sample : samples) {
        const double dx = sample.x - at[kX];
        const double dy = sample.y - at[kY];
        const double square = (dx * dx + dy * dy) * perVariance;
        const double shape = Exp(-0.5 * square);
        const double light = at[kPeak] * shape;
        const Vector slopes{shape, light * dx * perVariance, light * dy * perVariance, light * square / at[kSigma],
                            1.0};
        const double rest = sample.value - light - at[kSky];
        sums.Add(slopes, rest);
    }
    return sums;
}

Vector GaussianStepOf(GaussianEquations equations, double damping)
{
    equations.Damp(damping);
    equations.Eliminate();
    equations.Substitute();
    return equations.right;
}

bool IsStar(const Vector& at, double radius)
{
    return at[kPeak] > 0.0 && at[kSigma] > 0.0 && at[kSigma] < radius && std::fabs(at[kX]) < 0.5 * radius &&
           std::fabs(at[kY]) < 0.5 * radius;
}

/// Steps on until a step changes nothing; nothing when one leads away from stars.
std::optional<Vector> Fit(const std::vector<Sample>& samples, Vector at, double radius)
{
    double damping = kDamping;
    GaussianEquations here = GaussianEquationsAt(samples, at);
    for (int round = 0; round < kMostSteps; ++round) {
        const Vector step = GaussianStepOf(here, damping);
        Vector next = at;
        std::transform(at.begin(), at.end(), step.begin(), next.begin(), [](double a, double s) { return a + s; });
        if (!IsStar(next, radius)) { // NaN is none
            return std::nullopt;
        }
        const GaussianEquations there = GaussianEquationsAt(samples, next);
        if (there.squares <= here.squares) {
            const bool isSettled = std::fabs(step[kSigma]) < kSettledStep * at[kSigma];
            at = next;
            here = there;
            damping *= kEase;
            if (isSettled) {
                return at;
            }
        } else {
            damping *= kTighten;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<GaussianFit> FitGaussian(const Stamp& stamp, double sigma)
{
    const double radius = std::max(kLeastRadius, kRadius * sigma);
    const std::vector<Sample> samples = SamplesWithin(stamp, radius);
    if (samples.size() <= kUnknowns) {
        return std::nullopt;
    }
    const double top = std::max_element(samples.begin(), samples.end(), [](const Sample& a, const Sample& b) {
                           return a.value < b.value;
                       })->value;
    const std::optional<Vector> at = Fit(samples, {top, 0.0, 0.0, sigma, 0.0}, radius);
    if (!at) {
        return std::nullopt;
    }
    return GaussianFit{(*at)[kPeak], stamp.X() + (*at)[kX], stamp.Y() + (*at)[kY], (*at)[kSigma], (*at)[kSky]};
}

} // namespace corvane::stars
