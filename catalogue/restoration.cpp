#include "catalogue/restoration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/error.h"
#include "catalogue/parameter.h"
#include "catalogue/undefined.h"
#include "corvane/core/blank.h"
#include "corvane/core/memory_budget.h"
#include "corvane/measure/psf.h"
#include "corvane/restore/region.h"
#include "io/metadata.h"

namespace corvane::catalogue {
namespace {

constexpr double kSigmasOfDeviation = 1.482602218505602; // of a normal distribution, its median deviation
constexpr double kFwhmOfSigma = 2.354820045028949;
constexpr double kLeastPeak = 20.0;     // noise deviations above the sky; a fainter star has no clear half maximum
constexpr double kMostPeak = 0.8;       // of the way from the sky to the brightest sample: beyond it stars may be cut
constexpr std::size_t kMostStars = 500; // that are looked at
constexpr std::size_t kMostDraws = 1U << 20; // samples that a median is taken of

double MedianOf(std::vector<float>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return values.empty() ? 0.0 : *middle;
}

/// So many rows are left out between those that a median is taken of.
int RowStep(const CStlImage& image)
{
    const std::size_t samples = static_cast<std::size_t>(image.GetWidth()) * image.GetHeight();
    return static_cast<int>(samples / kMostDraws) + 1;
}

double NoiseOf(const CStlImage& image, int plane)
{
    constexpr int kApart = 2; // so that the blur of a neighbour hides little
    std::vector<float> differences;
    for (int y = 0; y < image.GetHeight(); y += RowStep(image)) {
        const float* row = image.GetImageAdr(0, y, plane, 1);
        for (int x = kApart; x < image.GetWidth(); ++x) {
            const float difference = std::fabs(row[x] - row[x - kApart]);
            if (std::isfinite(difference)) {
                differences.push_back(difference);
            }
        }
    }
    return MedianOf(differences) * kSigmasOfDeviation / std::sqrt(2.0);
}

double SkyOf(const CStlImage& image)
{
    std::vector<float> samples;
    for (int y = 0; y < image.GetHeight(); y += RowStep(image)) {
        const float* row = image.GetImageAdr(0, y, 0, 1);
        std::copy_if(row, row + image.GetWidth(), std::back_inserter(samples), [](float v) { return !std::isnan(v); });
    }
    return MedianOf(samples);
}

/// A sample that is greater than its eight neighbours.
struct Peak {
    int x;
    int y;
    float value;
};

bool IsPeak(const CStlImage& image, int x, int y)
{
    const float value = image.GetPixelGrayRaw(x, y, 0);
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            if ((dx != 0 || dy != 0) && !(value > image.GetPixelGrayRaw(x + dx, y + dy, 0))) {
                return false;
            }
        }
    }
    return true;
}

/// The peaks of the first plane between two values, brightest first. One on a plateau, as saturated stars are, is none.
std::vector<Peak> FindPeaks(const CStlImage& image, double least, double most)
{
    std::vector<Peak> peaks;
    for (int y = 1; y < image.GetHeight() - 1; ++y) {
        const float* row = image.GetImageAdr(0, y, 0, 1);
        for (int x = 1; x < image.GetWidth() - 1; ++x) {
            if (row[x] > least && row[x] < most && IsPeak(image, x, y)) {
                peaks.push_back({x, y, row[x]});
            }
        }
    }
    std::sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.value > b.value; });
    peaks.resize(std::min(peaks.size(), kMostStars));
    return peaks;
}

std::string GigabytesText(double bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3g GB", bytes / (1 << 30));
    return text;
}

/// How far samples along the row and the column of a peak stay above a value, and one more, at most 12.
int ReachOf(const CStlImage& image, const Peak& peak, double half)
{
    constexpr int kMost = 12;
    int reach = 1;
    for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}}) {
        int i = 1;
        while (i < kMost && image.GetPixelGrayRaw(peak.x + i * dx, peak.y + i * dy, 0) > half) {
            ++i;
        }
        reach = std::max(reach, i);
    }
    return reach;
}

/// True when the samples about a peak that rise above half of it make up a round spot: hot pixels are a single sample,
/// trails and stars that touch are long.
bool IsRound(const CStlImage& image, const Peak& peak, double sky)
{
    constexpr double kLeastSamples = 3.0;
    constexpr double kMostElongation = 0.45;    // (a^2 - b^2) / (a^2 + b^2) of the axes: 1.6 to 1
    constexpr double kSampleWidth = 1.0 / 12.0; // squared, which each sample brings along
    const double half = 0.5 * (sky + peak.value);
    const int reach = ReachOf(image, peak, half);
    std::array<double, 6> sums{}; // of 1, x, y, x x, x y and y y
    for (int dy = -reach; dy <= reach; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            const double counts = image.GetPixelGrayRaw(peak.x + dx, peak.y + dy, 0) > half ? 1.0 : 0.0;
            const double x = counts * dx;
            const double y = counts * dy;
            const std::array<double, 6> terms{counts, x, y, x * x, x * y, y * y};
            std::transform(sums.begin(), sums.end(), terms.begin(), sums.begin(), std::plus<>());
        }
    }
    const auto [n, x, y, xx, xy, yy] = sums;
    const double varianceX = xx / n - x / n * (x / n) + kSampleWidth;
    const double varianceY = yy / n - y / n * (y / n) + kSampleWidth;
    const double covariance = xy / n - x / n * (y / n);
    const double length = std::sqrt((varianceX - varianceY) * (varianceX - varianceY) + 4.0 * covariance * covariance);
    return n >= kLeastSamples && length < kMostElongation * (varianceX + varianceY);
}

void CheckMemory(int width, int height, double needed)
{
    const auto budget = static_cast<double>(MemoryBudget());
    if (needed > budget) {
        throw Error("a region of " + std::to_string(width) + " x " + std::to_string(height) + " needs " +
                    GigabytesText(needed) + " of memory; " + GigabytesText(budget) +
                    " are allowed (CORVANE_MEMORY); give a smaller rect");
    }
}

/// How many frames an image is the mean of.
double FramesOf(const io::Header& header)
{
    return std::max(header.Number("NCOMBINE").value_or(1.0), 1.0);
}

} // namespace

void CheckRestorable(const CStlImage& image, const CRect* rect, BytesOfRegion bytesOf)
{
    const CRect area = rect != nullptr ? *rect : CRect(0, 0, image.GetWidth(), image.GetHeight());
    CheckMemory(area.Width(), area.Height(), bytesOf(area.Width(), area.Height(), image.GetPlanes()));
    const BlankTest isBlank(image);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
            const float* const row = image.GetImageAdr(0, y, plane, 1);
            const float* const bad = std::find_if(row + area.left, row + area.right,
                                                  [&](float v) { return !std::isfinite(v) || isBlank(v); });
            if (bad != row + area.right) {
                throw Error("the sample at column " + std::to_string(bad - row) + ", row " + std::to_string(y) +
                            ", plane " + std::to_string(plane) +
                            " is undefined, and would spoil all others; give a rect without such samples, or " +
                            kFillThem);
            }
        }
    }
}

double MeasureStarSigma(CStlImage& image)
{
    const double sky = SkyOf(image);
    const double noise = NoiseOf(image, 0);
    image.CalcMinMax();
    const double most = sky + kMostPeak * (image.GetMaxPixel(0) - sky);
    PSF widths(&image);
    for (const Peak& peak : FindPeaks(image, sky + kLeastPeak * noise, most)) {
        if (IsRound(image, peak, sky)) {
            widths.Add(CPoint(peak.x, peak.y));
        }
    }
    double fwhm = 0.0;
    if (widths.GetMedianFWHM(&fwhm) == 0) {
        throw Error("fwhm = auto: there is no star to measure; give sigma or fwhm");
    }
    return fwhm / kFwhmOfSigma;
}

double MeasureNoise(const CStlImage& image)
{
    double noise = 0.0;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        noise = std::max(noise, NoiseOf(image, plane));
    }
    return noise;
}

double GainOf(const io::Header& header)
{
    const double gain = io::ElectronsPerCount(header).value_or(1.0);
    return (gain > 0.0 ? gain : 1.0) * FramesOf(header);
}

double ReadNoiseOf(const io::Header& header)
{
    for (const char* keyword : {"RDNOISE", "READNOIS"}) {
        if (const std::optional<double> noise = header.Number(keyword); noise && *noise >= 0.0) {
            return *noise * std::sqrt(FramesOf(header));
        }
    }
    return 0.0;
}

} // namespace corvane::catalogue
