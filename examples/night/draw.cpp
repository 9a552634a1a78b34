#include "examples/night/draw.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "corvane/core/exponential.h"
#include "examples/night/portable_math.h"

namespace corvane::night {

namespace {

double Distance(double dx, double dy)
{
    return std::sqrt(dx * dx + dy * dy);
}

constexpr double kSigmaPerFwhm = 0.42466090014400953;      // 1 / sqrt(8 ln 2)
constexpr double kMoffatAlphaPerFwhm = 1.1494796113767358; // 1 / (2 sqrt(2^(1/4) - 1))
constexpr double kGaussianReach = 4.8;                     // in sigma: 1e-5 of the flux lies outside
constexpr double kMoffatReach = 6.75;                      // in alpha: the same

// Gauss-Legendre nodes and weights on a pixel, from -1/2 to 1/2. Four to an axis keep the error of a Gaussian as narrow
// as a pixel below 1e-4 of its peak.
constexpr int kNodes = 4;
constexpr std::array<double, kNodes> kNode{-0.4305681557970263, -0.1699905217924281, 0.1699905217924281,
                                           0.4305681557970263};
constexpr std::array<double, kNodes> kWeight{0.1739274225687269, 0.3260725774312731, 0.3260725774312731,
                                             0.1739274225687269};

/// Pixels first..first + count - 1 of one axis.
struct Span {
    int first;
    int count;
};

Span SpanAbout(double centre, double reach, int size)
{
    const double low = std::clamp(std::floor(centre - reach), 0.0, static_cast<double>(size));
    const double high = std::clamp(std::ceil(centre + reach) + 1.0, low, static_cast<double>(size));
    return {static_cast<int>(low), static_cast<int>(high - low)};
}

/// The integrals of a normal distribution over the pixels of a span.
std::vector<double> GaussianIntegrals(Span span, double centre, double sigma)
{
    std::vector<double> integrals(static_cast<std::size_t>(span.count));
    const double peak = 1.0 / (sigma * std::sqrt(2.0 * std::numbers::pi));
    for (int i = 0; i < span.count; ++i) {
        for (int n = 0; n < kNodes; ++n) {
            const double t = (span.first + i + kNode[n] - centre) / sigma;
            integrals[i] += kWeight[n] * peak * Exp(-0.5 * t * t);
        }
    }
    return integrals;
}

void AddGaussian(Plane& plane, const Star& star)
{
    const double sigma = star.fwhm * kSigmaPerFwhm;
    const Span columns = SpanAbout(star.x, kGaussianReach * sigma, plane.width);
    const Span rows = SpanAbout(star.y, kGaussianReach * sigma, plane.height);
    const std::vector<double> across = GaussianIntegrals(columns, star.x, sigma);
    const std::vector<double> down = GaussianIntegrals(rows, star.y, sigma);
    for (int i = 0; i < rows.count; ++i) {
        float* row = plane.Row(rows.first + i) + columns.first;
        for (int j = 0; j < columns.count; ++j) {
            row[j] += static_cast<float>(star.flux * down[i] * across[j]);
        }
    }
}

/// The squared distances, in units of alpha, of a span's nodes from the centre: node by node, all pixels of each.
std::vector<double> SquaredDistances(Span span, double centre, double alpha)
{
    std::vector<double> squares;
    squares.reserve(static_cast<std::size_t>(span.count) * kNodes);
    for (const double node : kNode) {
        for (int i = 0; i < span.count; ++i) {
            const double t = (span.first + i + node - centre) / alpha;
            squares.push_back(t * t);
        }
    }
    return squares;
}

/// sums[i] += weight (1 + squares[i] + square)^-4
void AddMoffatNodes(const double* squares, double square, double weight, int count, double* sums)
{
    for (int i = 0; i < count; ++i) {
        const double q = 1.0 / (1.0 + square + squares[i]);
        const double q2 = q * q;
        sums[i] += weight * (q2 * q2);
    }
}

void AddMoffat(Plane& plane, const Star& star)
{
    const double alpha = star.fwhm * kMoffatAlphaPerFwhm;
    const Span columns = SpanAbout(star.x, kMoffatReach * alpha, plane.width);
    const Span rows = SpanAbout(star.y, kMoffatReach * alpha, plane.height);
    const std::vector<double> across = SquaredDistances(columns, star.x, alpha);
    const std::vector<double> down = SquaredDistances(rows, star.y, alpha);
    const double peak = star.flux * 3.0 / (std::numbers::pi * alpha * alpha);
    std::vector<double> sums(static_cast<std::size_t>(columns.count));
    for (int i = 0; i < rows.count; ++i) {
        std::fill(sums.begin(), sums.end(), 0.0);
        for (int n = 0; n < kNodes * kNodes; ++n) {
            const int u = n % kNodes;
            const int v = n / kNodes;
            AddMoffatNodes(across.data() + u * columns.count, down[v * rows.count + i], kWeight[u] * kWeight[v],
                           columns.count, sums.data());
        }
        float* row = plane.Row(rows.first + i) + columns.first;
        for (int j = 0; j < columns.count; ++j) {
            row[j] += static_cast<float>(peak * sums[j]);
        }
    }
}

} // namespace

void AddStar(Plane& plane, const Star& star, Profile profile)
{
    if (profile == Profile::kGaussian) {
        AddGaussian(plane, star);
    } else {
        AddMoffat(plane, star);
    }
}

void AddMovingStar(Plane& plane, const Star& star, Profile profile, double dx, double dy)
{
    constexpr double kStepsPerPixel = 2.0; // no star is so narrow that these show
    const int steps = static_cast<int>(Distance(dx, dy) * kStepsPerPixel) + 1;
    for (int i = 0; i < steps; ++i) {
        const double t = (i + 0.5) / steps - 0.5;
        AddStar(plane, {star.x + t * dx, star.y + t * dy, star.flux / steps, star.fwhm}, profile);
    }
}

void AddTrail(Plane& plane, const Trail& trail)
{
    const double length = Distance(trail.x1 - trail.x0, trail.y1 - trail.y0);
    const double ux = (trail.x1 - trail.x0) / length;
    const double uy = (trail.y1 - trail.y0) / length;
    const double sigma = trail.fwhm * kSigmaPerFwhm;
    const double peak = trail.electronsPerPixel / (sigma * std::sqrt(2.0 * std::numbers::pi));
    const double steepness = std::max(std::abs(uy), 1e-9); // a level trail meets its rows all along
    for (int y = 0; y < plane.height; ++y) {
        const double crossing = trail.x0 + (y - trail.y0) * ux / std::copysign(steepness, uy);
        const Span span = SpanAbout(crossing, kGaussianReach * sigma / steepness, plane.width);
        float* row = plane.Row(y);
        for (int x = span.first; x < span.first + span.count; ++x) {
            const double t = ((x - trail.x0) * uy - (y - trail.y0) * ux) / sigma;
            row[x] += static_cast<float>(peak * Exp(-0.5 * t * t));
        }
    }
}

void AddCosmicHit(Plane& plane, const CosmicHit& hit)
{
    constexpr double kStepsPerPixel = 8.0;
    const double length = Distance(hit.x1 - hit.x0, hit.y1 - hit.y0);
    const int steps = static_cast<int>(length * kStepsPerPixel) + 1;
    for (int i = 0; i < steps; ++i) {
        const double t = (i + 0.5) / steps;
        const int x = static_cast<int>(std::floor(hit.x0 + t * (hit.x1 - hit.x0) + 0.5));
        const int y = static_cast<int>(std::floor(hit.y0 + t * (hit.y1 - hit.y0) + 0.5));
        if (x >= 0 && x < plane.width && y >= 0 && y < plane.height) {
            plane.Row(y)[x] += static_cast<float>(hit.electrons / steps);
        }
    }
}

} // namespace corvane::night
