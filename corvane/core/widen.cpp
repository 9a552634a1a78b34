#include "corvane/core/widen.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

#include "corvane/core/independent.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

constexpr double kMostOfMean = 0.5;   // square pixels: a mean of more would turn fine waves over
constexpr double kLeastWeight = 1e-7; // beyond which the kernel ends

/// The weights of the middle and of the samples 1, 2, ... beside it.
std::vector<double> WideningWeights(double variance)
{
    const int rounds = std::max(static_cast<int>(std::ceil(variance / kMostOfMean)), 1);
    const double beside = 0.5 * variance / rounds;
    std::vector<double> weights(static_cast<std::size_t>(rounds) + 2);
    weights[0] = 1.0;
    for (int round = 1; round <= rounds; ++round) {
        double before = weights[1]; // that of one to the left of the middle
        for (int d = 0; d <= round; ++d) {
            const auto i = static_cast<std::size_t>(d);
            const double own = weights[i];
            weights[i] = own + beside * (before - 2.0 * own + weights[i + 1]);
            before = own;
        }
    }
    while (weights.back() < kLeastWeight) {
        weights.pop_back();
    }
    const double sum = weights[0] + 2.0 * std::accumulate(weights.begin() + 1, weights.end(), 0.0);
    std::transform(weights.begin(), weights.end(), weights.begin(), [=](double w) { return w / sum; });
    return weights;
}

/// Makes blurred rows of a plane: down the columns first, then along the row.
class WideRows {
public:
    WideRows(const CStlImage& source, const std::vector<double>& weights)
        : source_(source), weights_(weights), reach_(weights.size() - 1),
          width_(static_cast<std::size_t>(source.GetWidth())), columns_(width_ + 2 * reach_), sums_(width_)
    {}

    void Make(int plane, int y, float* out)
    {
        double* const middle = columns_.data() + reach_;
        Add(plane, y, 0, middle);
        for (int d = 1; d <= static_cast<int>(reach_); ++d) {
            Add(plane, y, d, middle);
        }
        std::fill_n(columns_.begin(), reach_, middle[0]);
        std::fill_n(columns_.end() - static_cast<std::ptrdiff_t>(reach_), reach_, middle[width_ - 1]);
        std::transform(middle, middle + width_, sums_.begin(), [w = weights_[0]](double v) { return w * v; });
        for (std::size_t d = 1; d <= reach_; ++d) {
            const double weight = weights_[d];
            const double* const left = columns_.data() + reach_ - d;
            const double* const right = middle + d;
            CORVANE_INDEPENDENT
            for (std::size_t x = 0; x < width_; ++x) {
                sums_[x] += weight * (left[x] + right[x]);
            }
        }
        std::transform(sums_.begin(), sums_.end(), out, [](double v) { return static_cast<float>(v); });
    }

private:
    const float* Row(int plane, int y) const
    {
        return source_.GetImageAdr(0, std::clamp(y, 0, source_.GetHeight() - 1), plane, 1);
    }

    /// Adds the rows d above and below to the sums of the columns; the row itself begins them.
    void Add(int plane, int y, int d, double* sums) const
    {
        const float* const above = Row(plane, y - d);
        const float* const below = Row(plane, y + d);
        const double weight = weights_[static_cast<std::size_t>(d)];
        CORVANE_INDEPENDENT
        for (std::size_t x = 0; x < width_; ++x) {
            sums[x] = d == 0 ? weight * above[x] : sums[x] + weight * (static_cast<double>(above[x]) + below[x]);
        }
    }

    const CStlImage& source_;
    const std::vector<double>& weights_;
    std::size_t reach_;
    std::size_t width_;
    std::vector<double> columns_; ///< sums down the columns, with those of the edges beyond them
    std::vector<double> sums_;
};

} // namespace

void Widen(CStlImage& result, const CStlImage& source, double variance, const Run& run)
{
    const std::vector<double> weights = WideningWeights(variance);
    Stage stage(run, "Blurring...", result.GetHeight() * result.GetPlanes());
    const RowBlocks blocks(WorkingArea(result, nullptr), result.GetPlanes());
    WalkBlocks(blocks, result, {&source}, stage, 1, [&](const RowBlock& block) {
        WideRows rows(source, weights);
        for (int y = block.first; y < block.end; ++y) {
            rows.Make(block.plane, y, result.GetImageAdr(0, y, block.plane));
        }
    });
}

} // namespace corvane
