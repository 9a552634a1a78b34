#include "stack/stars.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/blank.h"
#include "stars/robust.h"

namespace corvane::stack {

namespace {

constexpr double kDetection = 8.0; // sigmas above the sky
constexpr double kSpread = 0.15;   // of the peak: a Gaussian of FWHM 2 still has 0.25 a pixel and a half away
constexpr int kRoundReach = 5;     // pixels, where a star of FWHM 12 still has fallen to 0.62
constexpr double kRoundFall = 0.7; // of the peak
constexpr std::size_t kSkySamples = 16384;

/// Samples spread evenly over a plane.
std::vector<double> SpreadSamples(const CStlImage& image, int plane)
{
    const BlankTest isBlank(image);
    const double pixels = static_cast<double>(image.GetWidth()) * image.GetHeight();
    const int step = std::max(1, static_cast<int>(std::sqrt(pixels / kSkySamples)));
    std::vector<double> samples;
    for (int y = step / 2; y < image.GetHeight(); y += step) {
        const float* row = image.GetImageAdr(0, y, plane, 1);
        for (int x = step / 2; x < image.GetWidth(); x += step) {
            if (std::isfinite(row[x]) && !isBlank(row[x])) {
                samples.push_back(row[x]);
            }
        }
    }
    return samples;
}

/// Three rows of a plane, around one.
struct RowTriple {
    const float* above;
    const float* at;
    const float* below;

    RowTriple(const CStlImage& image, int plane, int y)
        : above(image.GetImageAdr(0, y - 1, plane, 1)), at(image.GetImageAdr(0, y, plane, 1)),
          below(image.GetImageAdr(0, y + 1, plane, 1))
    {}

    /// Of equal neighbours the first in reading order is the maximum, so that a plateau counts once.
    bool IsMaximum(int x) const
    {
        const float s = at[x];
        return s > above[x - 1] && s > above[x] && s > above[x + 1] && s > at[x - 1] && s >= at[x + 1] &&
               s >= below[x - 1] && s >= below[x] && s >= below[x + 1];
    }
};

/// True when three of the four direct neighbours hold a good part of the excess over the sky.
bool IsSpread(const CStlImage& image, int plane, int x, int y, double sky)
{
    const double least = sky + kSpread * (image.GetPixelGrayRaw(x, y, plane) - sky);
    int count = 0;
    for (const auto& [nx, ny] : {CPoint(x - 1, y), CPoint(x + 1, y), CPoint(x, y - 1), CPoint(x, y + 1)}) {
        count += image.GetPixelGrayRaw(nx, ny, plane) >= least ? 1 : 0;
    }
    return count >= 3;
}

/// True when on no line through a place both ends of it, kRoundReach away, are nearly as bright.
bool IsRound(const CStlImage& image, int plane, int x, int y, double sky)
{
    const double most = sky + kRoundFall * (image.GetPixelGrayRaw(x, y, plane) - sky);
    const auto isBright = [&](int dx, int dy) {
        return image.GetPixelGrayRaw(x + dx, y + dy, plane) > most &&
               image.GetPixelGrayRaw(x - dx, y - dy, plane) > most;
    };
    for (int i = -kRoundReach; i < kRoundReach; ++i) {
        if (isBright(kRoundReach, i) || isBright(-i, kRoundReach)) {
            return false;
        }
    }
    return true;
}

/// The brighter neighbour on each of the four lines through a sample; of these the faintest.
float Support(const CStlImage& image, int plane, int x, int y)
{
    float support = std::numeric_limits<float>::infinity();
    for (const auto& [dx, dy] : {CPoint(1, 0), CPoint(0, 1), CPoint(1, 1), CPoint(1, -1)}) {
        support = std::min(support, std::max(image.GetPixelGrayRaw(x + dx, y + dy, plane),
                                             image.GetPixelGrayRaw(x - dx, y - dy, plane)));
    }
    return support;
}

bool IsBrighter(const Star& a, const Star& b)
{
    return a.excess > b.excess;
}

void KeepBrightest(std::vector<Star>& stars, std::size_t limit)
{
    std::sort(stars.begin(), stars.end(), IsBrighter);
    stars.resize(std::min(stars.size(), limit));
}

} // namespace

Sky MeasureSky(const CStlImage& image, int plane)
{
    const stars::RobustLevel sky = stars::MeasureLevel(SpreadSamples(image, plane));
    return {sky.median, sky.deviation};
}

std::vector<Star> FindStars(const CStlImage& image, int plane, const Sky& sky, std::size_t limit)
{
    const BlankTest isBlank(image);
    const double threshold = sky.level + kDetection * sky.noise;
    std::vector<Star> stars;
    for (int y = 1; y < image.GetHeight() - 1; ++y) {
        const RowTriple rows(image, plane, y);
        for (int x = 1; x < image.GetWidth() - 1; ++x) {
            const double s = rows.at[x];
            if (s > threshold && rows.IsMaximum(x) && std::isfinite(s) && !isBlank(s)) {
                stars.push_back({x, y, s - sky.level, IsSpread(image, plane, x, y, sky.level),
                                 IsRound(image, plane, x, y, sky.level)});
            }
        }
        if (stars.size() > 4 * limit) {
            KeepBrightest(stars, limit);
        }
    }
    KeepBrightest(stars, limit);
    return stars;
}

void RemoveHits(CStlImage& image, int plane, const Sky& sky)
{
    struct Hit {
        int x;
        int y;
        float support;
    };
    std::vector<Hit> hits;
    for (int y = 1; y < image.GetHeight() - 1; ++y) {
        const float* row = image.GetImageAdr(0, y, plane, 1);
        for (int x = 1; x < image.GetWidth() - 1; ++x) {
            if (row[x] > sky.level + kDetection * sky.noise) {
                const float support = Support(image, plane, x, y);
                if (support - sky.level < kSpread * (row[x] - sky.level)) {
                    hits.push_back({x, y, support});
                }
            }
        }
    }
    for (const Hit& hit : hits) {
        image.SetPixelGrayRaw(hit.x, hit.y, hit.support, plane);
    }
}

} // namespace corvane::stack
