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

/// Where the positions of a stretch lie among the samples of a band.
struct Places {
    int isInner[kStretch];           ///< all samples of the kernel are on the plane
    int isWhole[kStretch];           ///< the row holds as many columns as fill vectors, too
    std::ptrdiff_t sample[kStretch]; ///< the one left of and above the position, from the first in memory
    int entryX[kStretch];            ///< the part of the way from there, as an entry of the table and the rest
    int entryY[kStretch];
    float restX[kStretch];
    float restY[kStretch];
};

/// Sums of columns over the rows of a kernel, times the weights of the columns. `first` is the kernel's first sample;
/// samples count as differences from `base`.
template <int kColumns, std::size_t... kRows>
void SumColumns(const float* __restrict first, std::ptrdiff_t width, float base, const float* __restrict down,
                const float* __restrict across, float* __restrict columns, std::index_sequence<kRows...>)
{
#pragma GCC unroll 1 // kept a loop so that it becomes vectors
    for (int k = 0; k < kColumns; ++k) {
        const float sum = (0.0F + ... + ((first[static_cast<std::ptrdiff_t>(kRows) * width + k] - base) * down[kRows]));
        columns[k] = sum * across[k];
    }
}

/// The least and the greatest of the nearest 4 x 4 samples of the positions of a stretch.
struct NearSamples {
    static constexpr int kNear = 2 * kNearReach;
    float least[kStretch][kNear]; ///< of each column
    float greatest[kStretch][kNear];

    /// `first` is the top left one of them.
    void Set(int i, const float* __restrict first, std::ptrdiff_t width)
    {
#pragma GCC unroll 1
        for (int k = 0; k < kNear; ++k) {
            const float a = first[k];
            const float b = first[width + k];
            const float c = first[2 * width + k];
            const float d = first[3 * width + k];
            least[i][k] = Least(Least(a, b), Least(c, d));
            greatest[i][k] = Greatest(Greatest(a, b), Greatest(c, d));
        }
    }

    double Limit(int i, double value) const
    {
        const float* const low = least[i];
        const float* const high = greatest[i];
        return corvane::Limit(value, Least(Least(low[0], low[1]), Least(low[2], low[3])),
                              Greatest(Greatest(high[0], high[1]), Greatest(high[2], high[3])));
    }
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
        int anchor = 0;
        while (anchor < count && !IsInner(x[anchor], y[anchor])) {
            ++anchor;
        }
        if (anchor < count) {
            SumPositions(x, y, count, anchor, values);
        } else {
            std::fill_n(values, count, kUnknown);
        }
        for (int i = 0; i < count; ++i) {
            values[i] = IsFinite(values[i]) ? values[i] : BilinearAt(plane_, x[i], y[i]);
        }
    }

    /// Positions (ix + i + part, y); those between `begin` and `end` have all columns.
    void Row(int ix, double part, double y, int count, double* values) const
    {
        const int iy = static_cast<int>(y);
        const int begin = HasRows(y) ? std::clamp(kReach - 1 - ix, 0, count) : count;
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
    static constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

    bool HasRows(double y) const { return (y >= kReach - 1) & (y < plane_.height - kReach); }
    bool IsInner(double x, double y) const { return (x >= kReach - 1) & (x < plane_.width - kReach) & HasRows(y); }

    const float* First(int ix, int iy) const { return plane_.Row(iy - (kReach - 1)) + ix - (kReach - 1); }

    /// Where positions lie; those that are not inner get the place of one that is.
    void Place(const double* __restrict x, const double* __restrict y, int count, int anchor,
               Places& __restrict places) const
    {
        const double innerX = x[anchor];
        const double innerY = y[anchor];
        for (int i = 0; i < count; ++i) {
            const bool isInner = IsInner(x[i], y[i]);
            const double atX = isInner ? x[i] : innerX;
            const double atY = isInner ? y[i] : innerY;
            const int ix = static_cast<int>(atX);
            const int iy = static_cast<int>(atY);
            const double partX = (atX - ix) * KernelWeights::kParts;
            const double partY = (atY - iy) * KernelWeights::kParts;
            places.isInner[i] = isInner;
            places.isWhole[i] = ix + kReach + kWhole - kTaps < plane_.width;
            places.sample[i] = static_cast<std::ptrdiff_t>(iy - plane_.firstRow) * plane_.width + ix;
            places.entryX[i] = static_cast<int>(partX);
            places.entryY[i] = static_cast<int>(partY);
            places.restX[i] = static_cast<float>(partX - places.entryX[i]);
            places.restY[i] = static_cast<float>(partY - places.entryY[i]);
        }
    }

    /// Values of the inner ones of some positions, which the one at `anchor` is of; the others become NaN.
    void SumPositions(const double* x, const double* y, int count, int anchor, double* values) const
    {
        Places places;
        Place(x, y, count, anchor, places);
        float bases[kStretch];
        float columns[kStretch][kWhole];
        NearSamples nearest;
        const std::ptrdiff_t width = plane_.width;
        for (int i = 0; i < count; ++i) {
            const float* const base = plane_.rows + places.sample[i];
            bases[i] = *base;
            if (places.isWhole[i] != 0) {
                SumAt<kWhole>(base, places, i, columns[i]);
            } else {
                SumAt<kTaps>(base, places, i, columns[i]);
            }
            nearest.Set(i, base - (kNearReach - 1) * (width + 1), width);
        }
        for (int i = 0; i < count; ++i) {
            float sum = 0.0F;
            for (int k = 0; k < kReach; ++k) {
                sum += columns[i][k] + columns[i][k + kReach];
            }
            const double value = nearest.Limit(i, static_cast<double>(bases[i]) + sum);
            values[i] = places.isInner[i] != 0 ? value : kUnknown;
        }
    }

    /// The sums of columns at the i-th place, whose sample is `base`.
    template <int kColumns>
    void SumAt(const float* base, const Places& places, int i, float* columns) const
    {
        float across[kColumns];
        float down[kColumns];
        weights_.template Set<kColumns>(places.entryX[i], places.restX[i], across);
        weights_.template Set<kColumns>(places.entryY[i], places.restY[i], down);
        const std::ptrdiff_t width = plane_.width;
        SumColumns<kColumns>(base - (kReach - 1) * (width + 1), width, *base, down, across, columns,
                             std::make_index_sequence<kTaps>());
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
