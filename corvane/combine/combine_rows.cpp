#include "corvane/combine/combine_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ranges>

namespace corvane {
namespace {

// Pixels that are sorted together: enough for a few vectors of any processor, few enough that 200 frames stay in the
// nearest cache.
constexpr int kColumns = 16;

using Exchanges = std::vector<RowCombiner::Exchange>;

/// The exchanges that sort n values.
Exchanges SortingNetwork(int n)
{
    Exchanges network;
    int top = 1;
    while (top * 2 < n) {
        top *= 2;
    }
    for (int p = top; p > 0 && n > 1; p /= 2) {
        int q = top;
        int r = 0;
        int d = p;
        for (;;) {
            for (int i = 0; i + d < n; ++i) {
                if ((i & p) == r) {
                    network.push_back({i, i + d});
                }
            }
            if (q == p) {
                break;
            }
            d = q - p;
            q /= 2;
            r = p;
        }
    }
    return network;
}

/// Leaves out the exchanges that have no part in the value at one place.
Exchanges KeepWhatReaches(int place, int n, const Exchanges& network)
{
    std::vector<bool> needed(static_cast<std::size_t>(n), false);
    needed[static_cast<std::size_t>(place)] = true;
    Exchanges kept;
    for (const auto& exchange : std::views::reverse(network)) {
        const auto low = static_cast<std::size_t>(exchange.low);
        const auto high = static_cast<std::size_t>(exchange.high);
        if (needed[low] || needed[high]) {
            needed[low] = needed[high] = true;
            kept.push_back(exchange);
        }
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

/// The values of all frames at a block of pixels: frame after frame, `kColumns` each.
template <class T>
struct Block {
    T* values;
    int frames;

    T* Row(int i) const { return values + static_cast<std::ptrdiff_t>(i) * kColumns; }

    void Apply(const Exchanges& network) const
    {
        for (const auto& exchange : network) {
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

/// What is known of a block of pixels before any statistic: frames that have nothing there, and NaN.
struct Gaps {
    double lastInvalid[kColumns] = {};
    int anyInvalid[kColumns] = {};
    int anyNan[kColumns] = {};

    float Fill(int k, double statistic) const
    {
        const double valid = anyNan[k] != 0 ? std::numeric_limits<double>::quiet_NaN() : statistic;
        return static_cast<float>(anyInvalid[k] != 0 ? lastInvalid[k] : valid);
    }
};

/// Copies the values of a block of pixels, whole or at the end of the row a part of one.
template <class T>
void Gather(const CombineLine* lines, int begin, int columns, const Block<T>& block, Gaps& gaps)
{
    for (int i = 0; i < block.frames; ++i) {
        const double* const values = lines[i].values + begin;
        const int* const valid = lines[i].valid + begin;
        T* const row = block.Row(i);
        for (int k = 0; k < columns; ++k) {
            const double v = values[k];
            row[k] = static_cast<T>(v);
            gaps.lastInvalid[k] = valid[k] != 0 ? gaps.lastInvalid[k] : v;
            gaps.anyInvalid[k] |= valid[k] == 0;
            gaps.anyNan[k] |= v != v; // NOLINT(misc-redundant-expression): true for NaN alone, and vectorises
        }
    }
}

/// The sigma clipping of a block of sorted values: which of them are kept.
struct Clipping {
    double low[kColumns];
    double high[kColumns];
    int first[kColumns] = {}; ///< place of the first kept value
    int kept[kColumns] = {};

    explicit Clipping(const Block<double>& block)
    {
        double sum[kColumns] = {};
        double squares[kColumns] = {};
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                sum[k] += block.Row(i)[k];
            }
        }
        for (double& s : sum) {
            s /= block.frames;
        }
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double off = block.Row(i)[k] - sum[k];
                squares[k] += off * off;
            }
        }
        const double* const median = block.Row(block.frames / 2);
        for (int k = 0; k < kColumns; ++k) {
            const double sigma = std::sqrt(squares[k] / block.frames);
            low[k] = median[k] - 3.0 * sigma;
            high[k] = median[k] + 3.0 * sigma;
        }
        for (int i = 0; i < block.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double v = block.Row(i)[k];
                first[k] += v <= low[k] ? 1 : 0;
                kept[k] += Keeps(k, v) ? 1 : 0;
            }
        }
    }

    bool Keeps(int k, double v) const { return (v > low[k]) & (v < high[k]); }
};

void ClippedMedian(const Block<double>& block, double* statistic)
{
    const Clipping clipping(block);
    for (int k = 0; k < kColumns; ++k) {
        const int place = clipping.kept[k] == 0 ? 0 : clipping.first[k] + clipping.kept[k] / 2;
        statistic[k] = block.Row(place)[k];
    }
}

/// The sum carries its rounding error along, so that it is as exact as one in extended precision.
/// D. E. Knuth, The Art of Computer Programming 2, 1969, section 4.2.2.
void ClippedMean(const Block<double>& block, double* statistic)
{
    const Clipping clipping(block);
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

/// Combines a row block by block: `statisticOf(block, statistic)` takes the gathered values.
template <class T, class StatisticOf>
void CombineBlocks(const CombineLine* lines, int count, const Block<T>& block, float* result, StatisticOf statisticOf)
{
    for (int begin = 0; begin < count; begin += kColumns) {
        const int columns = std::min(kColumns, count - begin);
        Gaps gaps;
        double statistic[kColumns];
        if (columns == kColumns) {
            Gather(lines, begin, kColumns, block, gaps);
        } else {
            Gather(lines, begin, columns, block, gaps);
        }
        statisticOf(block, statistic);
        for (int k = 0; k < columns; ++k) {
            result[begin + k] = gaps.Fill(k, statistic[k]);
        }
    }
}

} // namespace

// A median rounded to float is the median of the values rounded to float, and floats sort at twice the speed.
RowCombiner::RowCombiner(CombineMethod method, int frames)
    : method_(method), frames_(std::max(frames, 0)), usesFloats_(method == CombineMethod::kMedian || frames_ == 1)
{
    network_ = SortingNetwork(frames_);
    if (method == CombineMethod::kMedian && frames_ > 0) {
        network_ = KeepWhatReaches(frames_ / 2, frames_, network_);
    }
    const std::size_t values = static_cast<std::size_t>(frames_) * kColumns;
    usesFloats_ ? floats_.resize(values) : doubles_.resize(values);
}

void RowCombiner::Combine(const CombineLine* lines, int count, float* result)
{
    if (frames_ == 0) {
        std::fill_n(result, count, 0.0F);
        return;
    }
    if (usesFloats_) {
        const Block<float> block{floats_.data(), frames_};
        CombineBlocks(lines, count, block, result, [&](const Block<float>& gathered, double* statistic) {
            gathered.Apply(network_);
            std::copy_n(gathered.Row(frames_ / 2), kColumns, statistic);
        });
        return;
    }
    const Block<double> block{doubles_.data(), frames_};
    CombineBlocks(lines, count, block, result, [&](const Block<double>& gathered, double* statistic) {
        gathered.Apply(network_);
        method_ == CombineMethod::kClippedMedian ? ClippedMedian(gathered, statistic)
                                                 : ClippedMean(gathered, statistic);
    });
}

} // namespace corvane
