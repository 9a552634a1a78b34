#include "corvane/combine/covered_rows.h"

#include <algorithm>
#include <limits>

#include "corvane/combine/pixel_block.h"

namespace corvane {
namespace {

/// Copies the values of a block of pixels and counts them; those that are missing become infinite. Returns the smallest
/// count.
template <class T>
int Gather(const std::vector<CombineLine>& lines, int begin, int columns, const Block<T>& block, int* count)
{
    for (int i = 0; i < block.frames; ++i) {
        const double* const values = lines[i].values + begin;
        const int* const valid = lines[i].valid + begin;
        T* const row = block.Row(i);
        for (int k = 0; k < columns; ++k) {
            const double v = values[k];
            const int has = (valid[k] != 0) & (v == v); // NOLINT(misc-redundant-expression): false for NaN alone
            row[k] = has != 0 ? static_cast<T>(v) : std::numeric_limits<T>::infinity();
            count[k] += has;
        }
    }
    return *std::min_element(count, count + columns);
}

void StoreCounts(const int* counts, int begin, int columns, float* row)
{
    if (row != nullptr) {
        std::copy_n(counts, columns, row + begin);
    }
}

} // namespace

/// What comes of a block of pixels.
struct CoveredCombiner::Pixels {
    double statistic[kColumns] = {};
    int count[kColumns] = {};
    int low[kColumns] = {};
    int high[kColumns] = {};
};

CoveredCombiner::CoveredCombiner(CombineMethod method, Coverage coverage, const std::vector<double>& weights,
                                 double blank)
    : method_(method), coverage_(coverage), blank_(static_cast<float>(blank))
{
    const bool isMean = method == CombineMethod::kClippedMean;
    for (int i = 0; i < static_cast<int>(weights.size()); ++i) {
        if (!isMean || weights[i] > 0.0) {
            frames_.push_back(i);
            weights_.push_back(weights[i]);
        }
    }
    const int frames = static_cast<int>(frames_.size());
    isWeighted_ = isMean && std::any_of(weights_.begin(), weights_.end(), [&](double w) { return w != weights_[0]; });
    lines_.resize(frames_.size());
    sorting_ = whole_ = SortingNetwork(frames);
    const std::size_t values = frames_.size() * kColumns;
    if (method == CombineMethod::kMedian && frames > 0) {
        whole_ = KeepWhatReaches(frames / 2, frames, sorting_);
        floats_.resize(values);
    } else {
        doubles_.resize(values);
    }
    unsorted_.resize(isWeighted_ ? values : 0);
}

int CoveredCombiner::Combine(const CombineLine* lines, int count, const CoveredRow& result)
{
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        lines_[i] = lines[frames_[i]];
    }
    const int frames = static_cast<int>(frames_.size());
    return method_ == CombineMethod::kMedian ? CombineBlocks(Block<float>{floats_.data(), frames}, count, result)
                                             : CombineBlocks(Block<double>{doubles_.data(), frames}, count, result);
}

template <class T>
int CoveredCombiner::CombineBlocks(const Block<T>& block, int count, const CoveredRow& result)
{
    int fewest = block.frames;
    for (int begin = 0; begin < count; begin += kColumns) {
        const int columns = std::min(kColumns, count - begin);
        Pixels pixels;
        const int least = columns == kColumns ? Gather(lines_, begin, kColumns, block, pixels.count)
                                              : Gather(lines_, begin, columns, block, pixels.count);
        if (block.frames > 0) {
            TakeStatistic(block, least == block.frames, pixels);
        }
        Store(pixels, begin, columns, result);
        fewest = std::min(fewest, least);
    }
    return fewest;
}

// A median rounded to float is the median of the values rounded to float, and floats sort at twice the speed.
void CoveredCombiner::TakeStatistic(const Block<float>& block, bool isWhole, Pixels& pixels) const
{
    block.Apply(isWhole ? whole_ : sorting_);
    for (int k = 0; k < kColumns; ++k) {
        pixels.statistic[k] = block.Row(pixels.count[k] / 2)[k];
    }
}

void CoveredCombiner::TakeStatistic(const Block<double>& block, bool isWhole, Pixels& pixels)
{
    if (isWeighted_) {
        std::copy(doubles_.begin(), doubles_.end(), unsorted_.begin());
    }
    block.Apply(sorting_);
    isWhole ? Clip(block, AllFrames{block.frames}, pixels) : Clip(block, SomeFrames{pixels.count}, pixels);
}

template <class Count>
void CoveredCombiner::Clip(const Block<double>& block, const Count& count, Pixels& pixels) const
{
    const Clipping clipping(block, count);
    if (method_ == CombineMethod::kClippedMedian) {
        ClippedMedian(block, clipping, pixels.statistic);
    } else if (isWeighted_) {
        WeightedMean(clipping, {unsorted_.data(), block.frames}, pixels);
    } else {
        ClippedMean(block, clipping, pixels.statistic);
    }
    const bool keepsNan = coverage_ == Coverage::kAll && !isWeighted_ && block.frames > 1;
    for (int k = 0; k < kColumns; ++k) {
        const bool isClipped = clipping.kept[k] != 0;
        pixels.statistic[k] = isClipped || keepsNan ? pixels.statistic[k] : block.Row(0)[k];
        pixels.low[k] = isClipped ? clipping.first[k] : 0;
        pixels.high[k] = isClipped ? count.Of(k) - clipping.first[k] - clipping.kept[k] : 0;
    }
}

void CoveredCombiner::WeightedMean(const Clipping& clipping, const Block<const double>& unsorted, Pixels& pixels) const
{
    double sum[kColumns] = {};
    double weights[kColumns] = {};
    for (int i = 0; i < unsorted.frames; ++i) {
        const double weight = weights_[i];
        for (int k = 0; k < kColumns; ++k) {
            const double v = unsorted.Row(i)[k];
            sum[k] += weight * (clipping.Keeps(k, v) ? v : 0.0);
            weights[k] += clipping.Keeps(k, v) ? weight : 0.0;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        pixels.statistic[k] = sum[k] / weights[k];
    }
}

void CoveredCombiner::Store(const Pixels& pixels, int begin, int columns, const CoveredRow& result) const
{
    const int frames = static_cast<int>(frames_.size());
    const int needed = coverage_ == Coverage::kAll ? std::max(frames, 1) : 1;
    float* const values = result.values + begin;
    for (int k = 0; k < columns; ++k) {
        values[k] = pixels.count[k] >= needed ? static_cast<float>(pixels.statistic[k]) : blank_;
    }
    for (int k = 0; k < columns && coverage_ == Coverage::kAll; ++k) {
        values[k] = pixels.count[k] < frames ? Gap(begin + k) : values[k];
    }
    StoreCounts(pixels.count, begin, columns, result.coverage);
    StoreCounts(pixels.low, begin, columns, result.rejectedLow);
    StoreCounts(pixels.high, begin, columns, result.rejectedHigh);
}

/// What a pixel shows that not all frames have although they should: the value that the last frame without it stands
/// for. NaN among the values gives NaN.
float CoveredCombiner::Gap(int x) const
{
    const auto last =
        std::find_if(lines_.rbegin(), lines_.rend(), [x](const auto& line) { return line.valid[x] == 0; });
    return last == lines_.rend() ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(last->values[x]);
}

} // namespace corvane
