#include "corvane/measure/overscan.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/sigma_clipping.h"
#include "corvane/core/walk.h"
#include "corvane/measure/clamped_region.h"
#include "corvane/tone/auto_level.h"

using namespace corvane;

namespace {

/// The samples of a row before its first blank.
int LengthToBlank(const float* row, int count, const BlankTest& isBlank)
{
    return isBlank.IsNever() ? count : static_cast<int>(std::find_if(row, row + count, isBlank) - row);
}

/// Puts the values in order and keeps those strictly within 3 standard deviations of their median.
void Clip(std::vector<WeightedValue>& values)
{
    if (!values.empty()) {
        const ClipBounds kept = SortAndClip(values);
        std::erase_if(values, [&](const WeightedValue& v) { return !kept.Has(v.value); });
    }
}

/// The samples of plane 0 on the positions of a strip.
struct Strip {
    const CStlImage& image;
    ClampedSpan columns;
    ClampedSpan rows;

    template <class Visit>
    void ForEachRun(Visit visit) const
    {
        const auto lengthOf = [isBlank = BlankTest(image)](const float* row, int count) {
            return LengthToBlank(row, count, isBlank);
        };
        for (int y = rows.first; columns.count > 0 && y <= rows.Last(); ++y) {
            VisitRuns(image, 0, columns, rows, y, lengthOf, visit);
        }
    }

    std::optional<double> PlainMean() const
    {
        WeightedSum sum;
        ForEachRun([&](const float* samples, int length, std::uint64_t weight) {
            WeightedSum::VisitTerms(samples, length, weight, BlankTest(),
                                    [&](const WeightedSum& term) { sum.Add(term); });
        });
        return sum.count > 0.0 ? std::optional(sum.Mean()) : std::nullopt;
    }

    std::optional<double> ClippedMean() const
    {
        std::vector<WeightedValue> values;
        ForEachRun([&](const float* samples, int length, std::uint64_t weight) {
            for (int i = 0; i < length; ++i) {
                values.push_back({samples[i], static_cast<double>(weight)});
            }
        });
        Clip(values);
        return values.empty() ? std::nullopt : std::optional(Mean(values, [](double v) { return v; }));
    }
};

/// The positions from one edge to the other, both included, in either order.
ClampedSpan Between(int a, int b, int size)
{
    return {std::min(a, b), static_cast<std::int64_t>(std::max(a, b)) + 1, size};
}

void Subtract(CStlImage& image, double bias)
{
    const BlankTest isBlank(image);
    WriteRows(image, 1, [&](float* row, int) {
        const int length = LengthToBlank(row, image.GetWidth(), isBlank);
        std::transform(row, row + length, row, [=](float v) { return static_cast<float>(v - bias); });
    });
}

} // namespace

void CImgOverScan::Do(int left, int right, int top, int bottom, int clip)
{
    const std::optional<double> bias = OverscanBias(*this, left, right, top, bottom, clip);
    if (!bias) {
        return;
    }
    Subtract(*this, std::fabs(*bias));
    const AutoLevelSettings settings = ReadAutoLevelSettings();
    CImgAutoLevel levels;
    levels.Swap(this); // not a copy: automatic levels change no sample
    levels.Do(settings.lowSigma, settings.highSigma, settings.perPlane, nullptr);
    Swap(&levels);
}

void CImgOverScan::SigmaClipping(int& count, double* values)
{
    std::vector<WeightedValue> kept;
    for (int i = 0; i < count; ++i) {
        kept.push_back({values[i]});
    }
    Clip(kept);
    count = 0;
    for (const WeightedValue& v : kept) {
        values[count++] = v.value;
    }
}

std::optional<double> corvane::OverscanBias(const CStlImage& image, int left, int right, int top, int bottom, int clip)
{
    const Strip strip{image, Between(left, right, image.GetWidth()), Between(top, bottom, image.GetHeight())};
    if (image.GetPlanes() < 1) {
        return std::nullopt;
    }
    return clip != 0 ? strip.ClippedMean() : strip.PlainMean();
}
