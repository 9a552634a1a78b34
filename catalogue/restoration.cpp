#include "catalogue/restoration.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/parameter.h"
#include "catalogue/undefined.h"
#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/text.h"
#include "corvane/restore/region.h"
#include "io/metadata.h"
#include "stars/find_stars.h"
#include "stars/full_well.h"
#include "stars/robust.h"
#include "stars/sky_mesh.h"

namespace corvane::catalogue {
namespace {

constexpr double kSigmasOfDeviation = 1.482602218505602; // of a normal distribution, its median deviation
constexpr double kClearStar = 40.0;          // deviations of the smoothed sky: a fainter one has no clear width
constexpr std::size_t kMostDraws = 1U << 20; // samples that a median is taken of

/// So many rows are left out between those that a median is taken of.
int RowStep(const CStlImage& image)
{
    const std::size_t samples = static_cast<std::size_t>(image.GetWidth()) * image.GetHeight();
    return static_cast<int>(samples / kMostDraws) + 1;
}

double NoiseOf(const CStlImage& image, int plane)
{
    constexpr int kApart = 2; // so that the blur of a neighbour hides little
    std::vector<double> differences;
    for (int y = 0; y < image.GetHeight(); y += RowStep(image)) {
        const float* row = image.GetImageAdr(0, y, plane, 1);
        for (int x = kApart; x < image.GetWidth(); ++x) {
            const float difference = std::fabs(row[x] - row[x - kApart]);
            if (std::isfinite(difference)) {
                differences.push_back(difference);
            }
        }
    }
    return stars::MedianOf(differences) * kSigmasOfDeviation / std::sqrt(2.0);
}

std::string GigabytesText(double bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.3g GB", bytes / (1 << 30));
    return text;
}

void CheckMemory(int width, int height, double needed)
{
    const auto budget = static_cast<double>(MemoryBudget());
    if (needed > budget) {
        throw InputError("image", "needs " + GigabytesText(needed) + " of memory for a region of " +
                                      SizeText(width, height) + "; " + GigabytesText(budget) +
                                      " are allowed (CORVANE_MEMORY); give a smaller rect");
    }
}

/// How many frames an image is the mean of.
double FramesOf(const io::Header& header)
{
    return std::max(header.Number("NCOMBINE").value_or(1.0), 1.0);
}

} // namespace

void CheckRestorable(const CStlImage& image, const CRect* rect, const BytesOfRegion& bytesOf)
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
                throw InputError("image", "has an undefined sample, which would spoil all others, at column " +
                                              std::to_string(bad - row) + ", row " + std::to_string(y) + ", plane " +
                                              std::to_string(plane) + "; give a rect without such samples, or " +
                                              kFillThem);
            }
        }
    }
}

void CheckRestorable(const CStlImage& image, const CRect* rect, const RestorationNeeds& needs)
{
    const auto bytesOf = [&](int width, int height, int planes) {
        return RestorationBytes(width, height, planes, needs);
    };
    CheckRestorable(image, rect, BytesOfRegion(bytesOf));
}

double MeasureStarSigma(const CStlImage& image, const Run& run)
{
    const double fwhm = stars::FindFieldStars(image, stars::StarPlane(image), {.sigmas = kClearStar}, run).fwhm;
    if (fwhm == 0.0) {
        throw ParameterError("fwhm", "auto", "there is no star to measure; give sigma or fwhm");
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

std::vector<double> MeasureCeilings(const CStlImage& image, const Run& run)
{
    const Run silent{.cancelled = run.cancelled, .threads = run.threads};
    std::vector<double> ceilings;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const stars::SkyMesh sky = stars::MeasureSkyMesh(image, plane, silent);
        ceilings.push_back(stars::FullWellLevel(image, plane, sky.level.Median(), sky.noise.Median(), silent));
    }
    return ceilings;
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
