#include "corvane/restore/total_variation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "corvane/core/walk.h"

namespace corvane {

namespace {

/// The direction of the gradient along a row.
struct GradientRow {
    explicit GradientRow(int width) : across(static_cast<std::size_t>(width)), down(across.size()) {}

    void Set(const float* row, const float* below, double square)
    {
        const std::size_t last = across.size() - 1;
        CORVANE_INDEPENDENT
        for (std::size_t x = 0; x <= last; ++x) {
            const double dx = x < last ? static_cast<double>(row[x + 1]) - row[x] : 0.0;
            const double dy = static_cast<double>(below[x]) - row[x];
            const double length = std::sqrt(dx * dx + dy * dy + square);
            const double perLength = length > 0.0 ? 1.0 / length : 0.0;
            across[x] = dx * perLength;
            down[x] = dy * perLength;
        }
    }

    std::vector<double> across;
    std::vector<double> down;
};

} // namespace

/// The last row has itself below, and so no slope.
const float* TotalVariation::RowOf(const Samples& samples, int y) const
{
    return samples.data() + static_cast<std::ptrdiff_t>(std::min(y, height_ - 1)) * width_;
}

/// Calls work(first, end) for blocks of rows.
template <class Work>
void TotalVariation::ForRows(Work work) const
{
    const RowBlocks blocks(CRect(0, 0, width_, height_));
    ForRowBlocks(blocks, ThreadsFor(blocks.Samples(), threads_),
                 [&](const RowBlock& block) { work(block.first, block.end); });
}

void TotalVariation::FindCurvature(const Samples& image, Samples& curvature) const
{
    ForRows([&](int first, int end) {
        GradientRow above(width_);
        GradientRow here(width_);
        if (first > 0) {
            above.Set(RowOf(image, first - 1), RowOf(image, first), square_);
        }
        for (int y = first; y < end; ++y) {
            here.Set(RowOf(image, y), RowOf(image, y + 1), square_);
            float* const out = curvature.data() + static_cast<std::ptrdiff_t>(y) * width_;
            for (std::size_t x = 0; x < here.across.size(); ++x) {
                const double before = x > 0 ? here.across[x - 1] : 0.0;
                out[x] = static_cast<float>(here.across[x] - before + here.down[x] - above.down[x]);
            }
            std::swap(above, here);
        }
    });
}

} // namespace corvane
