#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "corvane/combine/sorting_network.h"

namespace corvane {

// Pixels that are sorted together: enough for a few vectors of any processor, few enough that 200 frames stay in the
// nearest cache.
inline constexpr int kColumns = 16;

/// The values of all frames at a block of pixels: frame after frame, `kColumns` each.
template <class T>
struct Block {
    T* values;
    int frames;

    T* Row(int i) const { return values + static_cast<std::ptrdiff_t>(i) * kColumns; }

    void Apply(const std::vector<Exchange>& network) const
    {
        for (const Exchange& exchange : network) {
            Order(Row(exchange.low), Row(exchange.high));
        }
    }

private:
    static void Order(T* __restrict low, T* __restrict high)
    {
        for (int k = 0; k < kColumns; ++k) {
            const T a = low[k];
            const T b = high[k];
            low[k] = std::min(a, b);
            high[k] = std::max(a, b);
        }
    }
};

/// Every pixel of a block has as many values as there are frames.
struct AllFrames {
    int frames;

    int Of(int) const { return frames; }
    static bool Has(int, int) { return true; }
};

/// Each pixel of a block has a number of values of its own, which come first once they are sorted.
struct SomeFrames {
    const int* count;

    int Of(int k) const { return count[k]; }
    bool Has(int i, int k) const { return i < count[k]; }
};

/// The sigma clipping of a block of sorted values: which of them are kept.
struct Clipping {
    double low[kColumns];
    double high[kColumns];
    int first[kColumns] = {}; ///< place of the first kept value
    int kept[kColumns] = {};

    template <class Count>
    Clipping(const Block<double>& block, const Count& count)
    {
        SetBounds(block, count);
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double v = block.Row(i)[k];
                const bool isBelow = (v <= low[k]) & count.Has(i, k);
                first[k] += isBelow ? 1 : 0;
                kept[k] += Keeps(k, v) ? 1 : 0; // which missing values, being infinite, never are
            }
        }
    }

    bool Keeps(int k, double v) const { return (v > low[k]) & (v < high[k]); }

private:
    template <class Count>
    void SetBounds(const Block<double>& block, const Count& count)
    {
        double mean[kColumns] = {};
        double squares[kColumns] = {};
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                mean[k] += count.Has(i, k) ? block.Row(i)[k] : 0.0;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            mean[k] /= count.Of(k);
        }
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double off = block.Row(i)[k] - mean[k];
                squares[k] += count.Has(i, k) ? off * off : 0.0;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            const double median = block.Row(count.Of(k) / 2)[k];
            const double sigma = std::sqrt(squares[k] / count.Of(k));
            low[k] = median - 3.0 * sigma;
            high[k] = median + 3.0 * sigma;
        }
    }
};

/// The medians of what the clipping keeps; of a pixel where it keeps nothing the smallest value.
inline void ClippedMedian(const Block<double>& block, const Clipping& clipping, double* statistic)
{
    for (int k = 0; k < kColumns; ++k) {
        const int place = clipping.kept[k] == 0 ? 0 : clipping.first[k] + clipping.kept[k] / 2;
        statistic[k] = block.Row(place)[k];
    }
}

/// The means of what the clipping keeps; of a pixel where it keeps nothing NaN.
///
/// The sum carries its rounding error along, so that it is as exact as one in extended precision.
/// D. E. Knuth, The Art of Computer Programming 2, 1969, section 4.2.2.
inline void ClippedMean(const Block<double>& block, const Clipping& clipping, double* statistic)
{
    double sum[kColumns] = {};
    double error[kColumns] = {};
    for (int i = 0; i < block.frames; ++i) {
        for (int k = 0; k < kColumns; ++k) {
            const double v = block.Row(i)[k];
            const double term = clipping.Keeps(k, v) ? v : 0.0;
            const double next = sum[k] + term;
            const double part = next - sum[k];
            error[k] += (sum[k] - (next - part)) + (term - part);
            sum[k] = next;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        statistic[k] = (sum[k] + error[k]) / clipping.kept[k];
    }
}

} // namespace corvane
