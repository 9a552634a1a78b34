#include "corvane/tone/auto_stretch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "corvane/core/defined.h"
#include "corvane/core/fold.h"
#include "corvane/core/middle_two.h"
#include "corvane/tone/stretch.h"

namespace corvane {
namespace {

/// How the samples of one plane, or the planes of an image on the mean, are spread.
struct PlaneSpread {
    double median = 0.0;
    double deviation = 0.0; ///< 1.4826 times the median absolute deviation
    double min = 0.0;
    double max = 0.0;
    double mean = 0.0;
};

/// The median of keyOf(sample) over a plane; nothing where none has a key.
template <class KeyOfSample>
std::optional<double> MedianOfPlane(const CStlImage& image, int plane, KeyOfSample keyOf)
{
    const RowBlocks blocks(WorkingArea(image, nullptr));
    const auto count = [&](auto binOf) {
        return CountBlocks<std::uint64_t>(blocks, kHalves, [&](std::uint64_t* counts, const RowBlock& block) {
            for (int y = block.first; y < block.end; ++y) {
                CountHalves(image.GetImageAdr(0, y, plane, 1), image.GetWidth(), 1, binOf, counts);
            }
        });
    };
    const auto middle = MiddleTwo(count, keyOf);
    return middle ? std::optional(0.5 * (static_cast<double>(middle->first) + middle->second)) : std::nullopt;
}

/// The mean of the samples of a plane that are defined, of which there are some.
double MeanOfPlane(const CStlImage& image, int plane, const DefinedTest& isDefined)
{
    const auto sumOf = [&](const RowBlock& block) {
        Sums<2> sums;
        for (int y = block.first; y < block.end; ++y) {
            const float* const row = image.GetImageAdr(0, y, plane, 1);
            sums.Add(static_cast<std::size_t>(image.GetWidth()), [=](std::size_t x, double* terms) {
                const bool counts = isDefined(row[x]);
                terms[0] = counts ? row[x] : 0.0;
                terms[1] = counts ? 1.0 : 0.0;
            });
        }
        return sums.Totals();
    };
    double total = 0.0;
    double count = 0.0;
    FoldBlocks(RowBlocks(WorkingArea(image, nullptr)), Threads(), sumOf, [&](const std::array<double, 2>& sums) {
        total += sums[0];
        count += sums[1];
    });
    return total / count;
}

std::optional<PlaneSpread> SpreadOf(const CStlImage& image, int plane)
{
    constexpr double kSigmaOfMad = 1.4826; // of normal noise
    const DefinedTest isDefined(image);
    const std::optional<double> median =
        MedianOfPlane(image, plane, [=](float v) { return isDefined(v) ? KeyOf(v) : kNoKey; });
    if (!median) {
        return std::nullopt;
    }
    const std::optional<double> mad = MedianOfPlane(image, plane, [=, middle = *median](float v) {
        return isDefined(v) ? KeyOf(static_cast<float>(std::fabs(v - middle))) : kNoKey;
    });
    const Extremes extremes = ExtremesOf(WorkingArea(image, nullptr), [&](Extremes& part, int y) {
        const float* const row = image.GetImageAdr(0, y, plane, 1);
        part.Add(
            image.GetWidth(), [=](int x) { return row[x]; }, [=](float v) { return !isDefined(v); });
    });
    return PlaneSpread{*median, kSigmaOfMad * *mad, extremes.Min(), extremes.Max(),
                       MeanOfPlane(image, plane, isDefined)};
}

/// The means of medians, deviations and means, and the extremes of all.
PlaneSpread Joint(const std::vector<std::optional<PlaneSpread>>& spreads)
{
    PlaneSpread joint{0.0, 0.0, HUGE_VAL, -HUGE_VAL, 0.0};
    double number = 0.0;
    for (const std::optional<PlaneSpread>& spread : spreads) {
        if (spread) {
            joint.median += spread->median;
            joint.deviation += spread->deviation;
            joint.mean += spread->mean;
            joint.min = std::min(joint.min, spread->min);
            joint.max = std::max(joint.max, spread->max);
            number += 1.0;
        }
    }
    joint.median /= number;
    joint.deviation /= number;
    joint.mean /= number;
    return joint;
}

AutoStretchPlane StretchOf(const PlaneSpread& spread, const AutoStretchLimits& limits)
{
    // What is dark in a bright frame pulls at its mean; a few dead pixels, however far below the others, hardly do.
    constexpr double kPull = 0.1;
    const bool isBright =
        spread.median > 0.5 * (spread.min + spread.max) && spread.mean < spread.median - kPull * spread.deviation;
    const bool hasNoise = spread.deviation > 0.0;
    const double away = limits.shadows * spread.deviation;
    const double low = hasNoise && !isBright ? spread.median + away : spread.min;
    const double high = hasNoise && isBright ? spread.median - away : spread.max;
    const double target = isBright ? 1.0 - limits.target : limits.target;
    const double place = (spread.median - low) / (high - low);
    return {low, high, place, MidtoneFor(place, target)};
}

} // namespace

std::vector<AutoStretchPlane> ChooseAutoStretch(const CStlImage& image, const AutoStretchLimits& limits)
{
    std::vector<std::optional<PlaneSpread>> spreads;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        spreads.push_back(SpreadOf(image, plane));
    }
    const PlaneSpread joint = Joint(spreads);
    std::vector<AutoStretchPlane> planes;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const std::optional<PlaneSpread>& own = spreads[static_cast<std::size_t>(plane)];
        const AutoStretchPlane chosen = StretchOf(limits.linked ? joint : own.value_or(PlaneSpread()), limits);
        planes.push_back(chosen.low < chosen.high
                             ? chosen
                             : AutoStretchPlane{image.GetLevelMin(plane), image.GetLevelMax(plane), 0.5, 0.5});
    }
    return planes;
}

void AutoStretch(CStlImage& result, const CStlImage& source, const AutoStretchLimits& limits, const Run& run)
{
    const std::vector<AutoStretchPlane> planes = ChooseAutoStretch(source, limits);
    std::vector<StretchFunction> functions;
    double places = 0.0;
    for (std::size_t plane = 0; plane < planes.size(); ++plane) {
        result.SetLevel(static_cast<int>(plane), planes[plane].low, planes[plane].high);
        functions.push_back(MidtoneStretch(planes[plane].midtone));
        places += planes[plane].median;
    }
    if (limits.curve == AutoStretchCurve::kAsinh) {
        const double k = AsinhFor(places / static_cast<double>(planes.size()), limits.target);
        Stretch(result, source, {AsinhStretch(k)}, {.perPlane = false}, nullptr, run);
        return;
    }
    Stretch(result, source, functions, {}, nullptr, run);
}

} // namespace corvane
