#include "stack/stars.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/blank.h"

namespace corvane::stack {

namespace {

constexpr double kDetection = 8.0;     // sigmas above the sky
constexpr double kSpread = 0.15;       // of the peak: a Gaussian of FWHM 2 still has 0.25 a pixel and a half away
constexpr int kHotPixelNeighbours = 1; // so many bright neighbours, or fewer, betray a hot pixel
constexpr std::size_t kSkySamples = 16384;
constexpr double kDeviationToSigma = 1.4826;

double Median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

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
    std::vector<double> samples = SpreadSamples(image, plane);
    if (samples.empty()) {
        return {};
    }
    const double level = Median(samples);
    for (double& s : samples) {
        s = std::fabs(s - level);
    }
    return {level, kDeviationToSigma * Median(samples)};
}

int CountBrightNeighbours(const CStlImage& image, int plane, int x, int y, double sky)
{
    const double least = kSpread * (image.GetPixelGrayRaw(x, y, plane) - sky);
    int count = 0;
    for (const auto& [nx, ny] : {CPoint(x - 1, y), CPoint(x + 1, y), CPoint(x, y - 1), CPoint(x, y + 1)}) {
        count += image.GetPixelGrayRaw(nx, ny, plane) - sky >= least ? 1 : 0;
    }
    return count;
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
                stars.push_back({x, y, s - sky.level, CountBrightNeighbours(image, plane, x, y, sky.level)});
            }
        }
        if (stars.size() > 4 * limit) {
            KeepBrightest(stars, limit);
        }
    }
    KeepBrightest(stars, limit);
    return stars;
}

void RemoveHotPixels(CStlImage& image, int plane, const Sky& sky)
{
    for (const Star& star : FindStars(image, plane, sky, static_cast<std::size_t>(image.GetPixelCount()))) {
        if (star.brightNeighbours <= kHotPixelNeighbours) {
            const double sum = static_cast<double>(image.GetPixelGrayRaw(star.x - 1, star.y, plane)) +
                               image.GetPixelGrayRaw(star.x + 1, star.y, plane) +
                               image.GetPixelGrayRaw(star.x, star.y - 1, plane) +
                               image.GetPixelGrayRaw(star.x, star.y + 1, plane);
            image.SetPixelGrayRaw(star.x, star.y, static_cast<float>(sum / 4.0), plane);
        }
    }
}

} // namespace corvane::stack
