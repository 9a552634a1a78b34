#include "corvane/colour/plane_mix.h"

#include <algorithm>
#include <cstddef>

#include "corvane/core/walk.h"

namespace corvane {
namespace {

constexpr int kMixLength = 512; // samples whose sums stay in the nearest cache

void AddWeighted(const float* __restrict row, double weight, double* __restrict sums, int count)
{
    for (int x = 0; x < count; ++x) {
        sums[x] += weight * row[x];
    }
}

void MixRow(const std::vector<WeightedPlane>& planes, double offset, int y, float* out, int width)
{
    double sums[kMixLength];
    for (int x = 0; x < width; x += kMixLength) {
        const int count = std::min(kMixLength, width - x);
        std::fill_n(sums, count, offset);
        for (const WeightedPlane& of : planes) {
            if (of.weight != 0.0) {
                AddWeighted(of.image->GetImageAdr(x, y, of.plane, 1), of.weight, sums, count);
            }
        }
        std::transform(sums, sums + count, out + x, [](double sum) { return static_cast<float>(sum); });
    }
}

} // namespace

void MixPlanes(const std::vector<WeightedPlane>& planes, double offset, CStlImage& result, int plane, Stage& stage)
{
    int threads = ThreadsOn(result, {}, stage.Threads());
    for (const WeightedPlane& of : planes) {
        threads = of.image == &result ? threads : std::min(threads, ThreadsOn(result, {of.image}, threads));
    }
    const auto mix = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            MixRow(planes, offset, y, result.GetImageAdr(0, y, plane), result.GetWidth());
        }
    };
    ForRowBlocks(RowBlocks(WorkingArea(result, nullptr)), threads, mix,
                 [&](const RowBlock& block) { CountRows(stage, block); });
}

} // namespace corvane
