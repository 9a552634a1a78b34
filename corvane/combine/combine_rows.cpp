#include "corvane/combine/combine_rows.h"

#include <algorithm>
#include <limits>

#include "corvane/combine/pixel_block.h"

namespace corvane {
namespace {

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
        const Clipping clipping(gathered, AllFrames{frames_});
        method_ == CombineMethod::kClippedMedian ? ClippedMedian(gathered, clipping, statistic)
                                                 : ClippedMean(gathered, clipping, statistic);
    });
}

} // namespace corvane
