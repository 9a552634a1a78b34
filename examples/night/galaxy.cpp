#include "examples/night/galaxy.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/exponential.h"
#include "examples/night/colour_filters.h"
#include "examples/night/portable_math.h"

namespace corvane::night {
namespace {

constexpr double kDiskPart = 0.1;     // of the core's brightness, where the disk is brightest
constexpr double kSlant = 0.6;        // the disk's shorter axis over the longer
constexpr double kPositionAngle = 30; // of the longer one [degrees]
constexpr double kWinding = 200.0;    // how far arms turn while the radius grows e-fold [degrees]
constexpr double kArmContrast = 0.7;  // of the arms with what lies between them
constexpr double kSmallestRadius = 1e-3;
constexpr double kLargestRadius = 12.0; // in scale lengths; what lies beyond is nothing
constexpr double kBulgeRedness = 0.6;
constexpr double kDiskRedness = -0.5;

/// The brightness of the disk over that of its middle, at a place in its plane [scale lengths].
double DiskAt(double u, double v)
{
    const double r = std::max(std::sqrt(u * u + v * v), kSmallestRadius);
    const auto [sine, cosine] = TurnBy(kWinding * Log(r));
    const double arms = ((u * u - v * v) * cosine + 2.0 * u * v * sine) / (r * r); // the cosine of twice the angle
    const double shown = std::min(r, 1.0); // within a scale length the arms fade
    return Exp(-r) * (1.0 + kArmContrast * shown * arms);
}

} // namespace

void AddGalaxy(Plane& plane, double core, std::optional<char> filter, const Placement& placement)
{
    const double scale = std::min(plane.width, plane.height) / 9.0; // [pixels]
    const double bulgeScale = scale / 6.0;
    const auto [s, c] = TurnBy(kPositionAngle);
    const double bulge = (1.0 - kDiskPart) * core * (filter ? StarShare(*filter, kBulgeRedness) : 1.0);
    const double disk = kDiskPart * core * (filter ? StarShare(*filter, kDiskRedness) : 1.0);
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x) {
            const Point first = placement.ToFirst({static_cast<double>(x), static_cast<double>(y)});
            const double dx = first.x - 0.5 * plane.width;
            const double dy = first.y - 0.5 * plane.height;
            const double u = (dx * c + dy * s) / scale;
            const double v = (dy * c - dx * s) / (scale * kSlant);
            if (u * u + v * v < kLargestRadius * kLargestRadius) {
                const double r = std::sqrt(dx * dx + dy * dy) / bulgeScale;
                plane.Row(y)[x] += static_cast<float>(bulge * Exp(-r) + disk * DiskAt(u, v));
            }
        }
    }
}

} // namespace corvane::night
