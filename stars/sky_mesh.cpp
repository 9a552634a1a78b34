#include "stars/sky_mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "stars/defined.h"
#include "stars/field_blocks.h"
#include "stars/robust.h"
#include "stars/sort_samples.h"

namespace corvane::stars {

namespace {

constexpr int kCell = 64;            // pixels: many stars wide, and finer than most nebulae
constexpr int kRowsOfCell = 9;       // that are looked at
constexpr std::size_t kFewest = 4;   // a quarter of these samples must be defined
constexpr double kClip = 3.0;        // deviations
constexpr double kCoarse = 1.5;      // steps of whole numbers: the next ones always count
constexpr double kClipped = 0.98477; // deviation of what clipping leaves of normal samples
constexpr double kCrowding = 0.93;   // clipping that leaves less of the deviation has met stars
constexpr double kSkewed = 0.3;      // deviations between mean and median beyond which the mode is not to be told
constexpr double kStepNoise = 0.28867513459481287; // 1 / sqrt(12) of a step, by rounding

/// What clipping finds in a cell.
struct CellSky {
    double level;
    double noise; ///< 0 when all that count are the same
    double step;  ///< between whole numbers, or close to 0
};

/// Mean and deviation of samples; they are taken from `centre`, so that no digits are lost.
std::pair<double, double> MeanAndDeviation(const float* first, const float* last, double centre)
{
    double sum = 0.0;
    double squares = 0.0;
    for (const float* s = first; s != last; ++s) {
        const double v = *s - centre;
        sum += v;
        squares += v * v;
    }
    const auto count = static_cast<double>(last - first);
    const double mean = sum / count;
    return {centre + mean, std::sqrt(std::max(0.0, squares / count - mean * mean))};
}

/// The median deviation from the median, both of which the sorted samples show.
double MedianDeviation(const std::vector<float>& sorted)
{
    const double median = sorted[sorted.size() / 2];
    std::size_t low = 0;
    std::size_t high = sorted.size();
    while (high - low > sorted.size() / 2 + 1) { // the farther end goes
        if (median - sorted[low] > sorted[high - 1] - median) {
            ++low;
        } else {
            --high;
        }
    }
    return std::max(median - sorted[low], sorted[high - 1] - median);
}

/// The smallest difference of two samples that are not the same; 0 when all are. It is 1 for whole numbers.
double StepOf(const std::vector<float>& sorted)
{
    constexpr float kNone = std::numeric_limits<float>::infinity();
    float step = kNone;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const float difference = sorted[i] - sorted[i - 1];
        step = difference > 0.0F ? std::min(step, difference) : step;
    }
    return step == kNone ? 0.0 : step;
}

/// Level and noise of the samples of a cell, one at least.
CellSky ClippedSky(std::vector<float>& samples)
{
    SortSamples(samples);
    const double step = StepOf(samples);
    const float* low = samples.data();
    const float* high = low + samples.size();
    double median = samples[samples.size() / 2];
    const double unclipped = MeanAndDeviation(low, high, median).second;
    double mean = median;
    double noise = std::max(kMedianToSigma * MedianDeviation(samples), kStepNoise * step);
    for (std::ptrdiff_t count = -1; count != high - low;) {
        count = high - low;
        const double reach = std::max(kClip * noise, kCoarse * step);
        low = std::lower_bound(low, high, median - reach);
        high = std::upper_bound(low, high, median + reach);
        median = low[(high - low) / 2];
        std::tie(mean, noise) = MeanAndDeviation(low, high, median);
        noise /= kClipped;
    }
    const bool isCrowded = noise < kCrowding * unclipped && noise > step;
    const bool isSkewed = std::fabs(mean - median) > kSkewed * noise;
    const double mode = isSkewed ? median : 2.5 * median - 1.5 * mean;
    return {isCrowded ? mode : mean, noise > 0.0 ? std::max(noise, kStepNoise * step) : 0.0, step};
}

/// Some of the samples of an area, those that are defined, and how many there could be.
std::size_t Collect(const CStlImage& image, int plane, const CRect& area, std::vector<float>& samples)
{
    const DefinedTest isDefined(image);
    const int height = static_cast<int>(area.bottom - area.top);
    const int step = std::max(1, height / kRowsOfCell) | 1; // odd: rows of both kinds of a mosaic filter count
    std::size_t places = 0;
    samples.clear();
    for (int y = static_cast<int>(area.top) + std::min(step, height) / 2; y < area.bottom; y += step) {
        const float* row = image.GetImageAdr(0, y, plane, 1);
        for (int x = static_cast<int>(area.left); x < area.right; ++x) {
            if (isDefined(row[x])) {
                samples.push_back(row[x]);
            }
        }
        places += static_cast<std::size_t>(area.right - area.left);
    }
    return places;
}

/// Gives every cell a level and a noise; none when no cell has.
SkyMesh Filled(SkyMesh mesh)
{
    for (CellGrid* grid : {&mesh.level, &mesh.noise}) {
        grid->FillGaps();
        grid->RemoveOutliers();
    }
    return mesh;
}

} // namespace

SkyMesh MeasureSkyMesh(const CStlImage& image, int plane, const Run& run)
{
    const CellGrid unknown(std::max(1, image.GetWidth()), std::max(1, image.GetHeight()), kCell);
    SkyMesh noisy{unknown, unknown};
    SkyMesh quiet{unknown, unknown}; // cells of one value: a border, or a sky without noise
    if (image.GetWidth() < 1 || image.GetHeight() < 1) {
        return noisy;
    }
    const auto measureRow = [&](int row) {
        std::vector<float> samples;
        for (int column = 0; column < unknown.Columns(); ++column) {
            const std::size_t places = Collect(image, plane, unknown.Area(column, row), samples);
            if (!samples.empty() && kFewest * samples.size() >= places) {
                const CellSky sky = ClippedSky(samples);
                SkyMesh& mesh = sky.noise > 0.0 ? noisy : quiet;
                mesh.level.Value(column, row) = static_cast<float>(sky.level);
                mesh.noise.Value(column, row) = static_cast<float>(sky.noise > 0.0 ? sky.noise : kStepNoise * sky.step);
            }
        }
    };
    const int threads = ReadersOf(image, static_cast<long long>(image.GetWidth()) * image.GetHeight(), run);
    platform::ForBlocks(unknown.Rows(), threads, measureRow, [](int) {});
    const SkyMesh filled = Filled(noisy);
    return filled.IsEmpty() ? Filled(quiet) : filled;
}

} // namespace corvane::stars
