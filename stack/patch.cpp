#include "stack/patch.h"

#include <algorithm>
#include <cmath>

namespace corvane::stack {

namespace {

constexpr double kForeign = 0.3; // of the star's peak: what so differs belongs to one of the two alone
constexpr int kCoreReach = 3;    // pixels about the peak that hold most of a star
constexpr int kDiskReach = 5;    // pixels about the peak over which its centroid is taken

/// Sums for the correlation and the regression of one set of samples on another.
struct Regression {
    double n = 0.0;
    double s = 0.0;
    double r = 0.0;
    double ss = 0.0;
    double rr = 0.0;
    double sr = 0.0;

    void Add(double sample, double reference)
    {
        n += 1.0;
        s += sample;
        r += reference;
        ss += sample * sample;
        rr += reference * reference;
        sr += sample * reference;
    }
    double Covariance() const { return sr - s * r / n; }
    double Variance() const { return rr - r * r / n; }
    double Correlation() const
    {
        const double product = Variance() * (ss - s * s / n);
        return product > 0.0 ? Covariance() / std::sqrt(product) : 0.0;
    }
    double Gain() const { return Variance() > 0.0 ? Covariance() / Variance() : 0.0; }
};

/// A sample of an image and what the patch has there, above the sky.
struct Pair {
    double sample;
    double reference;
};

Pair PairAt(const CStlImage& image, double x, double y, const Patch& patch, int column, int row, int plane)
{
    return {image.GetPixelGrayRaw(x + column, y + row, plane) - patch.level,
            patch.image.GetPixelGrayRaw(column, row, plane) - patch.level};
}

/// How much brighter than in the patch the star would be, to judge by its core.
double CoreGain(const CStlImage& image, double x, double y, const Patch& patch)
{
    double sr = 0.0;
    double rr = 0.0;
    for (int plane = 0; plane < patch.image.GetPlanes(); ++plane) {
        for (int row = patch.peakY - kCoreReach; row <= patch.peakY + kCoreReach; ++row) {
            for (int column = patch.peakX - kCoreReach; column <= patch.peakX + kCoreReach; ++column) {
                const auto [s, r] = PairAt(image, x, y, patch, column, row, plane);
                sr += s * r;
                rr += r * r;
            }
        }
    }
    return rr > 0.0 ? sr / rr : 0.0;
}

/// A sum of light and where its middle is.
struct Centroid {
    double sum = 0.0;
    double x = 0.0;
    double y = 0.0;

    void Add(double light, int column, int row)
    {
        sum += light;
        x += light * column;
        y += light * row;
    }
};

/// How far the star's centroid is from that in the patch.
double Drift(const CStlImage& image, double x, double y, const Patch& patch, int plane)
{
    Centroid ofImage;
    Centroid ofPatch;
    for (int dy = -kDiskReach; dy <= kDiskReach; ++dy) {
        for (int dx = -kDiskReach; dx <= kDiskReach; ++dx) {
            if (dx * dx + dy * dy <= kDiskReach * kDiskReach) {
                const auto [s, r] = PairAt(image, x, y, patch, patch.peakX + dx, patch.peakY + dy, plane);
                ofImage.Add(s, dx, dy);
                ofPatch.Add(r, dx, dy);
            }
        }
    }
    return std::max(std::fabs(ofImage.x / ofImage.sum - ofPatch.x / ofPatch.sum),
                    std::fabs(ofImage.y / ofImage.sum - ofPatch.y / ofPatch.sum));
}

} // namespace

Likeness Compare(const CStlImage& image, double x, double y, const Patch& patch)
{
    const double gain = CoreGain(image, x, y, patch);
    Regression sums;
    for (int plane = 0; plane < patch.image.GetPlanes(); ++plane) {
        for (int row = 0; row < patch.image.GetHeight(); ++row) {
            for (int column = 0; column < patch.image.GetWidth(); ++column) {
                const auto [s, r] = PairAt(image, x, y, patch, column, row, plane);
                if (std::fabs(s - gain * r) <= kForeign * gain * patch.peak) {
                    sums.Add(s, r);
                }
            }
        }
    }
    return {sums.Correlation(), sums.Gain(), Drift(image, x, y, patch, patch.plane)};
}

} // namespace corvane::stack
