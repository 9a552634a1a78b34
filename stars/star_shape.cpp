#include "stars/star_shape.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "corvane/core/exponential.h"

namespace corvane::stars {

namespace {

constexpr int kCentroidRounds = 12;
constexpr double kPixelDeviation = 0.28867513459481287; // 1 / sqrt(12)
constexpr double kSettledCentroid = 0.0005;             // pixels
constexpr double kFarthest = 1.5;                       // windows from the middle of the stamp
constexpr double kLeastShare = 0.001;                   // window variances
constexpr double kWidest = 0.98; // window variances: 7 windows wide, when the window's share is taken away

/// The weights of a window along one axis of a stamp, and the distances from its middle.
struct WindowAxis {
    std::vector<float> distance;
    std::vector<float> weight;

    WindowAxis(int reach, double middle, double window)
        : distance(static_cast<std::size_t>(2 * reach + 1)), weight(distance.size())
    {
        const double factor = -0.5 / (window * window);
        for (int i = 0; i <= 2 * reach; ++i) {
            const double d = i - reach - middle;
            distance[i] = static_cast<float>(d);
            weight[i] = static_cast<float>(Exp(factor * d * d));
        }
    }
};

/// Sums over a stamp, weighted by a window, about the window's middle.
struct Moments {
    double sum = 0.0;
    double x = 0.0;
    double y = 0.0;
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
};

Moments WindowedMoments(const Stamp& stamp, double x, double y, double window)
{
    const WindowAxis across(stamp.Reach(), x, window);
    const WindowAxis down(stamp.Reach(), y, window);
    const auto side = static_cast<std::size_t>(stamp.Side());
    std::vector<float> columns(3 * side); // of each column, the sums over y^0, y^1 and y^2
    float* const c0 = columns.data();
    float* const c1 = c0 + side;
    float* const c2 = c1 + side;
    for (int dy = -stamp.Reach(); dy <= stamp.Reach(); ++dy) {
        const float* row = stamp.Row(dy);
        const float d = down.distance[dy + stamp.Reach()];
        const float weight = down.weight[dy + stamp.Reach()];
        for (std::size_t i = 0; i < side; ++i) {
            const float v = weight * row[i];
            c0[i] += v;
            c1[i] += v * d;
            c2[i] += v * d * d;
        }
    }
    Moments m;
    for (std::size_t i = 0; i < side; ++i) {
        const double w = across.weight[i];
        const double d = across.distance[i];
        m.sum += w * c0[i];
        m.x += w * d * c0[i];
        m.y += w * c1[i];
        m.xx += w * d * d * c0[i];
        m.xy += w * d * c1[i];
        m.yy += w * c2[i];
    }
    return m;
}

/// The share of a window's weight that falls on undefined samples.
double LostShare(const Stamp& stamp, double x, double y, double window)
{
    if (!stamp.HasGaps()) {
        return 0.0;
    }
    const WindowAxis across(stamp.Reach(), x, window);
    const WindowAxis down(stamp.Reach(), y, window);
    double all = 0.0;
    double lost = 0.0;
    for (int dy = -stamp.Reach(); dy <= stamp.Reach(); ++dy) {
        const float* gaps = stamp.Gaps(dy);
        for (int i = 0; i < stamp.Side(); ++i) {
            const double weight = down.weight[dy + stamp.Reach()] * across.weight[i];
            all += weight;
            lost += weight * gaps[i];
        }
    }
    return lost / all;
}

/// A place in a stamp that is the centroid of what a window about it shows, and the moments there.
struct WindowCentroid {
    double x;
    double y;
    Moments moments;
};

std::optional<WindowCentroid> FollowCentroid(const Stamp& stamp, double window)
{
    const double farthest = kFarthest * window;
    WindowCentroid at{0.0, 0.0, {}};
    for (int round = 0; round < kCentroidRounds; ++round) {
        at.moments = WindowedMoments(stamp, at.x, at.y, window);
        // A window as wide as the star shows half of the way.
        const double stepX = 2.0 * at.moments.x / at.moments.sum;
        const double stepY = 2.0 * at.moments.y / at.moments.sum;
        at.x += stepX;
        at.y += stepY;
        const bool isNear = at.moments.sum > 0.0 && std::fabs(at.x) < farthest && std::fabs(at.y) < farthest;
        if (!isNear) {
            return std::nullopt;
        }
        if (std::max(std::fabs(stepX), std::fabs(stepY)) < kSettledCentroid) {
            break;
        }
    }
    return at;
}

/// The deviation of a Gaussian that has a variance when seen through a window.
double OwnDeviation(double variance, double window)
{
    const double share = std::clamp(variance / (window * window), kLeastShare, kWidest);
    return window * std::sqrt(share / (1.0 - share));
}

} // namespace

double StarShape::Width() const
{
    return std::sqrt(longest * shortest);
}

double StarShape::Elongation() const
{
    return std::max(longest, kPixelDeviation) / std::max(shortest, kPixelDeviation);
}

std::optional<StarShape> MeasureShape(const Stamp& stamp, double window)
{
    const std::optional<WindowCentroid> centroid = FollowCentroid(stamp, window);
    if (!centroid) {
        return std::nullopt;
    }
    const Moments& m = centroid->moments;
    const double xx = (m.xx - m.x * m.x / m.sum) / m.sum;
    const double yy = (m.yy - m.y * m.y / m.sum) / m.sum;
    const double xy = (m.xy - m.x * m.y / m.sum) / m.sum;
    const double half = 0.5 * (xx + yy);
    const double spread = std::sqrt(0.25 * (xx - yy) * (xx - yy) + xy * xy);
    if (!std::isfinite(half + spread)) {
        return std::nullopt;
    }
    return StarShape{stamp.X() + centroid->x, stamp.Y() + centroid->y, OwnDeviation(half + spread, window),
                     OwnDeviation(half - spread, window), LostShare(stamp, centroid->x, centroid->y, window)};
}

double ApertureSum(const Stamp& stamp, double x, double y, double radius)
{
    std::vector<float> columns(static_cast<std::size_t>(stamp.Side()));
    const auto reach = static_cast<float>(radius + 0.5);
    const auto left = static_cast<float>(stamp.X() - stamp.Reach() - x);
    for (int dy = -stamp.Reach(); dy <= stamp.Reach(); ++dy) {
        const float* row = stamp.Row(dy);
        const auto fromMiddle = static_cast<float>(stamp.Y() + dy - y);
        const float square = fromMiddle * fromMiddle;
        for (int i = 0; i < stamp.Side(); ++i) {
            const float d = left + static_cast<float>(i);
            const float share = reach - std::sqrt(d * d + square);
            columns[i] += row[i] * std::min(std::max(share, 0.0F), 1.0F);
        }
    }
    double sum = 0.0;
    for (const float column : columns) {
        sum += column;
    }
    return sum;
}

} // namespace corvane::stars
