// The Gaussian filter, as two passes of one dimension.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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

/// Columns that are worked on at a time: few enough to stay in the nearest cache.
constexpr int kBlock = 256;

/// Rows that are read at a time. Those of a power of two apart share their places in the cache, and more of them would
/// push each other out.
constexpr int kRowsAtOnce = 11;

/// A block of columns. The sums over the columns of the band have kRadius more on either side; where those lie outside
/// of the image they are mirrored.
template <int kRadius>
void GaussianBlock(const Band& band, const Weights& weights, int left, int right, float* __restrict out)
{
    const int begin = std::max(left - kRadius, 0);
    const int end = std::min(right + kRadius, band.Width());
    double sums[kBlock + 2 * kRadius];
    const auto sum = [&](int x) -> double& { return sums[x - left + kRadius]; };
    const auto in = [&](int x) { return [&, x](int d) { return static_cast<double>(band.Row(d)[x]); }; };
    constexpr int kNear = std::min(kRadius, kRowsAtOnce / 2);
    for (int x = begin; x < end; ++x) {
        sum(x) = in(x)(0) * weights[0] + WeightedPairs<1, kNear>(weights, in(x));
    }
    if constexpr (kRadius > kNear) {
        for (int x = begin; x < end; ++x) {
            sum(x) += WeightedPairs<kNear + 1, kRadius>(weights, in(x));
        }
    }
    for (int x = left - kRadius; x < begin; ++x) {
        sum(x) = sum(MirrorRow(x, band.Width()));
    }
    for (int x = end; x < right + kRadius; ++x) {
        sum(x) = sum(MirrorRow(x, band.Width()));
    }
    for (int x = left; x < right; ++x) {
        const double others = WeightedPairs<1, kRadius>(weights, [&](int d) { return sum(x + d); });
        out[x] = static_cast<float>(sum(x) * weights[0] + others);
    }
}

template <int kRadius>
void GaussianRow(const Band& band, const Weights& weights, int left, int right, float* out)
{
    ForEachBlock(band, left, right, kBlock, out,
                 [&](int first, int count) { GaussianBlock<kRadius>(band, weights, first, first + count, out); });
}

using Row = void (*)(const Band& band, const Weights& weights, int left, int right, float* out);

Row RowOf(int radius)
{
    constexpr auto kRows = []<int... kI>(std::integer_sequence<int, kI...>) {
        return std::array<Row, kMostRadius>{GaussianRow<kI + 1>...};
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
    const Row row = RowOf(radius);
    FilterRows(*this, source, rect, run, IDS_GAUSSIAN, radius, [&](int) {
        return [&](const Band& band, int left, int right, float* out) { row(band, weights, left, right, out); };
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
