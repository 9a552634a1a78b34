#include "stars/patch.h"

#include <algorithm>
#include <cmath>

#include "corvane/combine/matching.h"
#include "corvane/core/alignment.h"
#include "corvane/filter/filter.h"
#include "stars/find_stars.h"
#include "stars/sky_mesh.h"
#include "stars/stamp.h"

namespace corvane::stars {

namespace {

constexpr int kFineReach = 3;      // pixels; the fine passes of the search look so far beyond it
constexpr double kSmoothing = 1.0; // pixels; what is read between its samples is blurred, and drawn to whole ones, less
constexpr double kSkyLevel = 10.0; // in units of the peak, so that an object hardly changes the mean
constexpr double kLeastPeak = 2.0; // deviations of the sky; the smoothed sky itself hardly has 1.5
constexpr double kHit = 8.0;       // deviations of the sky
constexpr double kSpread = 0.15;   // of a sample: a Gaussian of FWHM 2 still has 0.25 a pixel and a half away
constexpr double kForeign = 0.3;   // of the peak: what so differs belongs to one of the two alone
constexpr int kCoreReach = 3;      // pixels about the peak that hold most of a star
constexpr int kDiscReach = 5;      // pixels about the peak over which its centroid is taken
constexpr int kObjectReach = 6;    // pixels, beyond which a smoothed star hardly goes

/// The brighter neighbour on each of the four lines through a sample; of these the faintest.
float Support(const CStlImage& image, int plane, int x, int y)
{
    const auto brighter = [&](int dx, int dy) {
        return std::max(image.GetPixelGrayRaw(x + dx, y + dy, plane), image.GetPixelGrayRaw(x - dx, y - dy, plane));
    };
    return std::min({brighter(1, 0), brighter(0, 1), brighter(1, 1), brighter(1, -1)});
}

/// Lowers hot pixels and tracks of particles, which along some line have no neighbour of a good part of their height,
/// to the brightest neighbour on that line.
void RemoveHits(CStlImage& image, int plane, double noise)
{
    const CStlImage before(image);
    for (int y = 1; y < image.GetHeight() - 1; ++y) {
        for (int x = 1; x < image.GetWidth() - 1; ++x) {
            const float sample = before.GetPixelGrayRaw(x, y, plane);
            const float support = sample > kHit * noise ? Support(before, plane, x, y) : sample;
            if (support < kSpread * sample) {
                image.SetPixelGrayRaw(x, y, support, plane);
            }
        }
    }
}

/// A square of a frame as it is compared: above the sky, without hits, smoothed.
struct Square {
    CStlImage image;
    double noise = 0.0; ///< of the sky in the plane of stars, before smoothing

    Square(const CStlImage& frame, int left, int top, int size, const Run& run = {})
        : image(-32, size, size, frame.GetPlanes(), 1.0, 0.0, 1)
    {
        for (int plane = 0; plane < frame.GetPlanes(); ++plane) {
            const SkyMesh sky = MeasureSkyMesh(frame, plane, run);
            if (sky.IsEmpty()) {
                continue;
            }
            Stamp stamp(frame, plane, size / 2);
            stamp.MoveTo(left + size / 2, top + size / 2, sky.level.Median());
            for (int y = 0; y < size; ++y) {
                std::copy_n(stamp.Row(y - size / 2), size, image.GetImageAdr(0, y, plane));
            }
            const double planeNoise = sky.noise.Median();
            RemoveHits(image, plane, planeNoise);
            noise = plane == StarPlane(frame) ? planeNoise : noise;
        }
        CImgFilter smooth(image);
        smooth.GaussianFilter(kSmoothing, &image, nullptr, 0);
        image.Swap(&smooth);
    }
};

/// The brightest sample of a plane.
struct Brightest {
    float value;
    int x = 0;
    int y = 0;

    Brightest(const CStlImage& image, int plane) : value(image.GetPixelGrayRaw(0, 0, plane))
    {
        for (int row = 0; row < image.GetHeight(); ++row) {
            const float* const samples = image.GetImageAdr(0, row, plane, 1);
            const float* const largest = std::max_element(samples, samples + image.GetWidth());
            if (*largest > value) {
                value = *largest;
                x = static_cast<int>(largest - samples);
                y = row;
            }
        }
    }
};

/// Every sample becomes sample * factor + offset.
void Rescale(CStlImage& image, double factor, double offset)
{
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            float* const row = image.GetImageAdr(0, y, plane);
            std::transform(row, row + image.GetWidth(), row,
                           [=](float s) { return static_cast<float>(s * factor + offset); });
        }
    }
}

/// Leaves nothing but sky where an object is.
void Erase(CStlImage& image, double x, double y, double level)
{
    const auto left = static_cast<int>(std::lround(x)) - kObjectReach;
    const auto top = static_cast<int>(std::lround(y)) - kObjectReach;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int row = std::max(top, 0); row <= std::min(top + 2 * kObjectReach, image.GetHeight() - 1); ++row) {
            for (int i = std::max(left, 0); i <= std::min(left + 2 * kObjectReach, image.GetWidth() - 1); ++i) {
                image.SetPixelGrayRaw(i, row, static_cast<float>(level), plane);
            }
        }
    }
}

/// Sums for the correlation of samples with those of a patch, and for their regression on these.
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
    double GainThroughZero() const { return rr > 0.0 ? sr / rr : 0.0; }
};

/// The centroid of a disc about a place of an image, from that place.
Position CentroidAbout(const CStlImage& image, double x, double y, double sky)
{
    double sum = 0.0;
    Position at{0.0, 0.0};
    for (int dy = -kDiscReach; dy <= kDiscReach; ++dy) {
        for (int dx = -kDiscReach; dx <= kDiscReach; ++dx) {
            if (dx * dx + dy * dy <= kDiscReach * kDiscReach) {
                const double light = image.GetPixelGrayRaw(x + dx, y + dy, StarPlane(image)) - sky;
                sum += light;
                at.x += light * dx;
                at.y += light * dy;
            }
        }
    }
    return {at.x / sum, at.y / sum};
}

double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0;
}

} // namespace

Patch::Patch(const CStlImage& image, const CPoint& centre, int size, int search, PatchLight light)
    : search_(search), light_(light), left_(std::max(std::min<int>(centre.x - size / 2, image.GetWidth() - size), 0)),
      top_(std::max(std::min<int>(centre.y - size / 2, image.GetHeight() - size), 0)),
      image_(-32, size, size, image.GetPlanes(), 1.0, 0.0, 1)
{
    Square square(image, left_ - kFineReach, top_ - kFineReach, size + 2 * kFineReach);
    image_.PixelBlt(0, 0, size, size, &square.image, kFineReach, kFineReach, 0);
    const Brightest top(image_, StarPlane(image_));
    peak_ = top.value;
    topX_ = top.x;
    topY_ = top.y;
    showsObject_ = peak_ > kLeastPeak * square.noise;
    for (int plane = 0; plane < image_.GetPlanes(); ++plane) {
        level_ = std::max(level_, kSkyLevel * Brightest(image_, plane).value);
    }
    Rescale(image_, 1.0, level_);
}

int Patch::Find(const CStlImage& frame, const std::function<bool(const PatchPlace&)>& visit, const Run& run) const
{
    const int margin = search_ + kFineReach;
    Square square(frame, left_ - margin, top_ - margin, image_.GetWidth() + 2 * margin, run);
    const double peak = Brightest(square.image, StarPlane(square.image)).value;
    if (light_ == PatchLight::kAny && !(peak > kLeastPeak * square.noise)) {
        return 0;
    }
    Rescale(square.image, light_ == PatchLight::kAny ? peak_ / peak : 1.0, level_);
    CImgMatching window;
    window.Swap(&square.image);
    for (int places = 0;; ++places) {
        double x = margin;
        double y = margin;
        if (window.Do(image_, &x, &y, 2 * search_, 1, run) == 0) {
            return places;
        }
        PatchPlace place = Compare(window, x, y);
        place.dx = Tenths(margin - x);
        place.dy = Tenths(margin - y);
        if (!visit(place)) {
            return places + 1;
        }
        Erase(window, x + topX_, y + topY_, level_);
    }
}

/// All but the shift. What counts in correlation and gain is told by the gain that the object's core alone shows.
PatchPlace Patch::Compare(const CStlImage& window, double x, double y) const
{
    const auto addAll = [&](const CRect& part, Regression& sums, auto isWanted) {
        for (int plane = 0; plane < image_.GetPlanes(); ++plane) {
            for (auto row = static_cast<int>(part.top); row < part.bottom; ++row) {
                for (auto column = static_cast<int>(part.left); column < part.right; ++column) {
                    const double sample = window.GetPixelGrayRaw(x + column, y + row, plane) - level_;
                    const double reference = image_.GetPixelGrayRaw(column, row, plane) - level_;
                    if (isWanted(sample, reference)) {
                        sums.Add(sample, reference);
                    }
                }
            }
        }
    };
    Regression core;
    addAll({topX_ - kCoreReach, topY_ - kCoreReach, topX_ + kCoreReach + 1, topY_ + kCoreReach + 1}, core,
           [](double, double) { return true; });
    const double gain = core.GainThroughZero();
    Regression all;
    addAll({0, 0, image_.GetWidth(), image_.GetHeight()}, all,
           [&](double s, double r) { return std::fabs(s - gain * r) <= kForeign * gain * peak_; });
    const Position own = CentroidAbout(image_, topX_, topY_, level_);
    const Position other = CentroidAbout(window, x + topX_, y + topY_, level_);
    const double drift = std::max(std::fabs(other.x - own.x), std::fabs(other.y - own.y));
    return {.correlation = all.Correlation(), .gain = all.Gain(), .drift = drift};
}

} // namespace corvane::stars
