#pragma once

#include <cstddef>
#include <vector>

#include "corvane/core/interpolation.h"
#include "corvane/platform/export.h"

namespace corvane {

/// The weights by which samples along one axis make a value between two of them, as a table of the part of the way from
/// the one to the other.
///
/// Cubic convolution: R. G. Keys, IEEE Transactions on Acoustics, Speech, and Signal Processing 29, 1153, 1981. The
/// windowed sinc: C. E. Duchon, Lanczos filtering in one and two dimensions, Journal of Applied Meteorology 18, 1016,
/// 1979; its weights are divided by their sum, so that they add up to 1. Between two entries of the table weights lie
/// on a line, which is within 3e-6 of the kernel.
class KernelWeights {
public:
    static constexpr int kParts = 512;  ///< of the way between two samples
    static constexpr int kMostTaps = 8; ///< samples of the farthest reach; an entry has zeros behind those of others

    /// The table of an interpolation other than the bilinear one, made when it is first asked for.
    CORVANE_VISIBLE static const KernelWeights& Of(Interpolation interpolation);

    /// Sets the weights of the samples from `ReachOf` - 1 before the position to `ReachOf` behind it, for a position a
    /// part of the way [0..1) from the sample before it to the next, and so many in all. At 0 the sample itself counts,
    /// exactly.
    template <int kTaps>
    void Set(double part, double* __restrict weights) const
    {
        const int entry = static_cast<int>(part * kParts);
        Set<kTaps>(table_.data(), entry, part * kParts - entry, weights);
    }

    /// The same in float, for a part of (entry + rest) / kParts.
    template <int kTaps>
    void Set(int entry, float rest, float* __restrict weights) const
    {
        Set<kTaps>(singles_.data(), entry, rest, weights);
    }

private:
    explicit KernelWeights(Interpolation interpolation);

    template <int kTaps, class Weight>
    static void Set(const Weight* __restrict table, int entry, Weight rest, Weight* __restrict weights)
    {
        const Weight* __restrict const low = table + static_cast<std::ptrdiff_t>(entry) * kMostTaps;
#pragma GCC unroll 1 // kept a loop so that it becomes vectors
        for (int k = 0; k < kTaps; ++k) {
            weights[k] = low[k] + (low[k + kMostTaps] - low[k]) * rest;
        }
    }

    std::vector<double> table_;  ///< kParts + 1 entries
    std::vector<float> singles_; ///< the same
};

} // namespace corvane
