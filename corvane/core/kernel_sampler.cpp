#include "corvane/core/kernel_sampler.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace corvane {
namespace {

constexpr int kNearReach = 2; // the nearest 4 x 4 samples bound a value
constexpr int kStretch = 256; // positions that are sampled together

bool IsFinite(double v)
{
    return v - v == 0.0;
}

// By value, unlike std::min and std::max: loops of references do not become vectors.
float Least(float a, float b)
{
    return b < a ? b : a;
}
float Greatest(float a, float b)
{
    return a < b ? b : a;
}

/// A finite value within the bounds that the nearest samples set.
double Limit(double v, float least, float greatest)
{
    const double range = static_cast<double>(greatest) - least;
    const double low = least - kUndershoot * range;
    const double high = greatest + kOvershoot * range;
    const double raised = v < low ? low : v;
    const double limited = raised > high ? high : raised;
    return IsFinite(v) ? limited : v;
}

/// Sums of columns over the rows of a kernel, kept a loop so that it becomes vectors.
template <int kColumns, std::size_t... kRows>
void SumColumns(const float* __restrict first, std::ptrdiff_t width, const double* __restrict down,
                double* __restrict columns, std::index_sequence<kRows...>)
{
#pragma GCC unroll 1
    for (int k = 0; k < kColumns; ++k) {
        columns[k] = (0.0 + ... + (first[static_cast<std::ptrdiff_t>(kRows) * width + k] * down[kRows]));
    }
}

/// The nearest 4 x 4 samples of the positions of a stretch.
class NearSamples {
public:
    void Copy(const float* first, std::ptrdiff_t width, int i)
    {
        for (int j = 0; j < kNear; ++j) {
            std::memcpy(rows_[j] + static_cast<std::ptrdiff_t>(i) * kNear, first + j * width, sizeof(float) * kNear);
        }
    }

    void Limit(int count, double* values)
    {
        for (int i = 0; i < count * kNear; ++i) {
            const float a = Least(rows_[0][i], rows_[1][i]);
            const float b = Least(rows_[2][i], rows_[3][i]);
            const float c = Greatest(rows_[0][i], rows_[1][i]);
            const float d = Greatest(rows_[2][i], rows_[3][i]);
            rows_[0][i] = Least(a, b);
            rows_[1][i] = Greatest(c, d);
        }
        for (int i = 0; i < count; ++i) {
            const float* const low = rows_[0] + static_cast<std::ptrdiff_t>(i) * kNear;
            const float* const high = rows_[1] + static_cast<std::ptrdiff_t>(i) * kNear;
            values[i] = corvane::Limit(values[i], Least(Least(low[0], low[1]), Least(low[2], low[3])),
                                       Greatest(Greatest(high[0], high[1]), Greatest(high[2], high[3])));
        }
    }

private:
    static constexpr int kNear = 2 * kNearReach;
    float rows_[kNear][kStretch * kNear];
};

/// The kernel of one interpolation at work on a plane.
template <int kReach>
class Sampler {
public:
    static constexpr int kTaps = 2 * kReach;
    static constexpr int kWhole = kTaps <= 4 ? 4 : 8; ///< columns that fill vectors
    Sampler(const PlaneRows& plane, const KernelWeights& weights) : plane_(plane), weights_(weights) {}

    /// Positions of one stretch, at most kStretch.
    void Positions(const double* x, const double* y, int count, double* values) const
    {
        int inner[kStretch + 1];
        int found = 0;
        for (int i = 0; i < count; ++i) {
            inner[found] = i;
            found += HasColumns(static_cast<int>(x[i])) && HasRows(static_cast<int>(y[i])) ? 1 : 0;
        }
        double sums[kStretch];
        NearSamples nearest;
        for (int i = 0; i < found; ++i) {
            const double atX = x[inner[i]];
            const double atY = y[inner[i]];
            const int ix = static_cast<int>(atX);
            const int iy = static_cast<int>(atY);
            const float* const first = First(ix, iy);
            const bool hasMore = ix + kReach + kWhole - kTaps < plane_.width;
            sums[i] = hasMore ? Sum<kWhole>(first, atX - ix, atY - iy) : Sum<kTaps>(first, atX - ix, atY - iy);
            nearest.Copy(first + static_cast<std::ptrdiff_t>(kReach - kNearReach) * (plane_.width + 1), plane_.width,
                         i);
        }
        nearest.Limit(found, sums);
        std::fill_n(values, count, std::numeric_limits<double>::quiet_NaN());
        for (int i = 0; i < found; ++i) {
            values[inner[i]] = sums[i];
        }
        for (int i = 0; i < count; ++i) {
            values[i] = IsFinite(values[i]) ? values[i] : BilinearAt(plane_, x[i], y[i]);
        }
    }

    /// Positions (ix + i + part, y); those between `begin` and `end` have all columns.
    void Row(int ix, double part, double y, int count, double* values) const
    {
        const int iy = static_cast<int>(y);
        const int begin = HasRows(iy) ? std::clamp(kReach - 1 - ix, 0, count) : count;
        const int end = std::clamp(plane_.width - kReach - ix, begin, count);
        if (begin < end) {
            SumRow(ix + begin, iy, part, y - iy, end - begin, values + begin);
        }
        for (int i = 0; i < count; ++i) {
            const bool isKnown = i >= begin && i < end && IsFinite(values[i]);
            values[i] = isKnown ? values[i] : BilinearAt(plane_, ix + i + part, y);
        }
    }

private:
    bool HasColumns(int ix) const { return ix >= kReach - 1 && ix + kReach < plane_.width; }
    bool HasRows(int iy) const { return iy >= kReach - 1 && iy + kReach < plane_.height; }

    const float* First(int ix, int iy) const { return plane_.Row(iy - (kReach - 1)) + ix - (kReach - 1); }

    /// The weighted sum of the samples from `first` on; so many columns are read, those of the kernel at least.
    template <int kColumns>
    double Sum(const float* first, double partX, double partY) const
    {
        double across[kColumns];
        double down[kColumns];
        double columns[kColumns];
        weights_.template Set<kColumns>(partX, across);
        weights_.template Set<kColumns>(partY, down);
        SumColumns<kColumns>(first, plane_.width, down, columns, std::make_index_sequence<kTaps>());
        double sum = 0.0;
        for (int k = 0; k < kReach; ++k) {
            sum += columns[k] * across[k] + columns[k + kReach] * across[k + kReach];
        }
        return sum;
    }

    /// The same sums for positions that share their weights: the columns of all first.
    void SumRow(int ix, int iy, double partX, double partY, int count, double* values) const
    {
        double across[kTaps];
        double down[kTaps];
        weights_.template Set<kTaps>(partX, across);
        weights_.template Set<kTaps>(partY, down);
        double columns[kStretch + kTaps] = {};
        const float* const first = First(ix, iy);
        for (int j = 0; j < kTaps; ++j) {
            const float* const row = first + static_cast<std::ptrdiff_t>(j) * plane_.width;
            for (int k = 0; k < count + kTaps - 1; ++k) {
                columns[k] += row[k] * down[j];
            }
        }
        for (int i = 0; i < count; ++i) {
            double sum = 0.0;
            for (int k = 0; k < kReach; ++k) {
                sum += columns[i + k] * across[k] + columns[i + k + kReach] * across[k + kReach];
            }
            values[i] = sum;
        }
        LimitRow(first, count, values);
    }

    void LimitRow(const float* first, int count, double* values) const
    {
        const float* row = first + static_cast<std::ptrdiff_t>(kReach - kNearReach) * (plane_.width + 1);
        const int columns = count + 2 * kNearReach - 1;
        float least[kStretch + 2 * kNearReach];
        float greatest[kStretch + 2 * kNearReach];
        std::copy_n(row, columns, least);
        std::copy_n(row, columns, greatest);
        for (int j = 1; j < 2 * kNearReach; ++j) {
            row += plane_.width;
            for (int k = 0; k < columns; ++k) {
                least[k] = Least(least[k], row[k]);
                greatest[k] = Greatest(greatest[k], row[k]);
            }
        }
        for (int i = 0; i < count; ++i) {
            values[i] = corvane::Limit(
                values[i], Least(Least(least[i], least[i + 1]), Least(least[i + 2], least[i + 3])),
                Greatest(Greatest(greatest[i], greatest[i + 1]), Greatest(greatest[i + 2], greatest[i + 3])));
        }
    }

    const PlaneRows& plane_;
    const KernelWeights& weights_;
};

/// Calls visit with the sampler of an interpolation.
template <class Visit>
void WithSampler(const PlaneRows& plane, Interpolation interpolation, Visit visit)
{
    const KernelWeights& weights = KernelWeights::Of(interpolation);
    switch (interpolation) {
    case Interpolation::kBilinear:
        break;
    case Interpolation::kBicubic:
        return visit(Sampler<2>(plane, weights));
    case Interpolation::kLanczos3:
        return visit(Sampler<3>(plane, weights));
    case Interpolation::kLanczos4:
        return visit(Sampler<4>(plane, weights));
    }
}

} // namespace

void SampleByKernel(const PlaneRows& plane, Interpolation interpolation, const double* x, const double* y, int count,
                    double* values)
{
    WithSampler(plane, interpolation, [=](const auto& sampler) {
        for (int i = 0; i < count; i += kStretch) {
            sampler.Positions(x + i, y + i, std::min(count - i, kStretch), values + i);
        }
    });
}

void SampleRowByKernel(const PlaneRows& plane, Interpolation interpolation, int column, double part, double y,
                       int count, double* values)
{
    WithSampler(plane, interpolation, [=](const auto& sampler) {
        for (int i = 0; i < count; i += kStretch) {
            sampler.Row(column + i, part, y, std::min(count - i, kStretch), values + i);
        }
    });
}

} // namespace corvane
