// The Gaussian filter, as two passes of one dimension.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "corvane/core/exponential.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/neighbourhood.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// The weights of the centre and of the samples 1, 2, ... beside it.
using Weights = std::array<double, kMostRadius + 1>;

/// The square kernel, normalised to sum 1, is the product of these with themselves.
Weights MakeWeights(double sigma, int radius)
{
    Weights weights{};
    double sum = 0.0;
    for (int d = 0; d <= radius; ++d) {
        const double w = Exp(-(d * d) / (2.0 * sigma * sigma));
        weights[static_cast<std::size_t>(d)] = w;
        sum += d == 0 ? w : 2.0 * w;
    }
    for (double& w : weights) {
        w /= sum;
    }
    return weights;
}

/// The weighted sum of the values from kFirst to kLast places before and behind a centre; at(d) is the one d behind.
template <int kFirst, int kLast, class At>
[[gnu::always_inline]] inline double WeightedPairs(const Weights& weights, At at)
{
    return [&]<int... kD>(std::integer_sequence<int, kD...>) {
        return (((at(-kFirst - kD) + at(kFirst + kD)) * weights[kFirst + kD]) + ...);
    }(std::make_integer_sequence<int, kLast - kFirst + 1>());
}

/// The sums over the columns of a band, for each of the rows that are made together: of a block, and of the 2 * kRadius
/// columns before it. Columns outside of the image are mirrored.
template <int kRadius>
class ColumnSums {
public:
    static constexpr int kBefore = 2 * kRadius;

    ColumnSums(const Band& band, const Weights& weights) : band_(band), weights_(weights) {}

    /// Sums so many columns from `begin` on, at most a block, and puts them at `to`. What is read is taken to double
    /// once for all rows; columns that a block lacks become 0.
    void Sum(int begin, int count, int to)
    {
        double samples[2 * kRadius + kMostRowsTogether][kBlockColumns];
        for (int i = 0; i < 2 * kRadius + kMostRowsTogether; ++i) {
            Read(band_.Row(i - kRadius), begin, count, samples[i]);
            std::fill(samples[i] + count, samples[i] + kBlockColumns, 0.0);
        }
        for (int i = 0; i < kMostRowsTogether; ++i) {
            SumRow(samples + i, sums_[i] + to);
        }
    }

    /// Makes so many samples of one row, from the first whose neighbours are there.
    void MakeRow(std::size_t i, int count, float* __restrict out) const
    {
        const double* const sums = sums_[i] + kRadius;
        for (int x = 0; x < count; ++x) {
            const double others = WeightedPairs<1, kRadius>(weights_, [&](int d) { return sums[x + d]; });
            out[x] = static_cast<float>(sums[x] * weights_[0] + others);
        }
    }

    /// Goes on to the next block.
    void Advance()
    {
        for (auto& row : sums_) {
            std::copy_n(row + kBlockColumns, kBefore, row);
        }
    }

private:
    void Read(const float* row, int begin, int count, double* __restrict out) const
    {
        const int width = band_.Width();
        if (begin >= 0 && begin + count <= width) {
            std::copy_n(row + begin, count, out);
            return;
        }
        for (int i = 0; i < count; ++i) {
            out[i] = row[MirrorRow(begin + i, width)];
        }
    }

    /// Sums the columns for one row: the near samples, then those farther away by themselves. The last digits of a sum
    /// depend on that order, so it stays.
    void SumRow(const double (*samples)[kBlockColumns], double* __restrict sums) const
    {
        constexpr int kNear = std::min(kRadius, 5);
        for (int x = 0; x < kBlockColumns; ++x) {
            const auto in = [&](int d) { return samples[kRadius + d][x]; };
            sums[x] = in(0) * weights_[0] + WeightedPairs<1, kNear>(weights_, in);
            if constexpr (kRadius > kNear) {
                sums[x] += WeightedPairs<kNear + 1, kRadius>(weights_, in);
            }
        }
    }

    const Band& band_;
    const Weights& weights_;
    double sums_[kMostRowsTogether][kBefore + kBlockColumns];
};

template <int kRadius>
void GaussianRows(const Band& band, const Weights& weights, int left, int right, std::span<float* const> out)
{
    using Sums = ColumnSums<kRadius>;
    Sums sums(band, weights);
    sums.Sum(left - kRadius, Sums::kBefore, 0);
    for (int x = left; x < right; x += kBlockColumns) {
        const int count = std::min(kBlockColumns, right - x);
        sums.Sum(x + kRadius, count, Sums::kBefore);
        for (std::size_t i = 0; i < out.size(); ++i) {
            sums.MakeRow(i, count, out[i] + x);
        }
        sums.Advance();
    }
}

using Rows = void (*)(const Band& band, const Weights& weights, int left, int right, std::span<float* const> out);

Rows RowsOf(int radius)
{
    constexpr auto kRows = []<int... kI>(std::integer_sequence<int, kI...>) {
        return std::array<Rows, kMostRadius>{GaussianRows<kI + 1>...};
    }(std::make_integer_sequence<int, kMostRadius>());
    return kRows[static_cast<std::size_t>(radius - 1)];
}

} // namespace

void CImgFilter::GaussianFilter(double sigma, CStlImage* source, CRect* rect, int showProgress)
{
    GaussianFilter(sigma, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::GaussianFilter(double sigma, const CStlImage& source, const CRect* rect, const Run& run)
{
    sigma = sigma > 0.1 ? std::min(sigma, 5.0) : 0.1;
    const int radius = static_cast<int>(std::ceil(2.0 * sigma));
    const Weights weights = MakeWeights(sigma, radius);
    const Rows rows = RowsOf(radius);
    FilterRowsTogether(*this, source, rect, run, IDS_GAUSSIAN, radius, [&](int) {
        return [&](const Band& band, int left, int right, std::span<float* const> out) {
            rows(band, weights, left, right, out);
        };
    });
}

float CImgFilter::GetGaussianRaw(const float* const* rows, int x, int r, const double* kernel) const
{
    const int centre = std::clamp(x, 0, std::max(GetWidth() - 1, 0));
    double sum = 0.0;
    for (int i = 0; i <= 2 * r; ++i) {
        for (int dx = -r; dx <= r; ++dx) {
            sum += rows[i][MirrorRow(static_cast<long long>(centre) + dx, GetWidth()) - centre] * *kernel++;
        }
    }
    return static_cast<float>(sum);
}

float CImgFilter::GetGaussianGray(const float* const* rows, int x, int r, const double* kernel, int plane) const
{
    const float raw = GetGaussianRaw(rows, x, r, kernel);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetGaussian256f(const float* const* rows, int x, int r, const double* kernel, int plane) const
{
    return To256(GetGaussianRaw(rows, x, r, kernel), plane);
}
