#include "corvane/combine/row_combiner.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "corvane/combine/kept_moments.h"

namespace corvane {
namespace {

/// Copies the values of a block of pixels and counts those that are there. Returns the smallest count.
template <class T>
int Gather(const std::vector<CombineLine>& lines, int begin, int columns, const Block<T>& block, int* count)
{
    int has[kColumns] = {}; // lies in registers, as `count` cannot
    for (int i = 0; i < block.frames; ++i) {
        const double* const values = lines[i].values + begin;
        const int* const valid = lines[i].valid + begin;
        T* const row = block.Row(i);
        for (int k = 0; k < columns; ++k) {
            const double v = values[k];
            row[k] = static_cast<T>(v);
            has[k] += (valid[k] != 0) & (v == v); // NOLINT(misc-redundant-expression): false for NaN alone
        }
    }
    int least = block.frames;
    for (int k = 0; k < columns; ++k) {
        count[k] = has[k];
        least = std::min(least, has[k]);
    }
    return least;
}

/// Makes the values that are missing infinite.
template <class T>
void MarkMissing(const std::vector<CombineLine>& lines, int begin, int columns, const Block<T>& block)
{
    for (int i = 0; i < block.frames; ++i) {
        const int* const valid = lines[i].valid + begin;
        T* const row = block.Row(i);
        for (int k = 0; k < columns; ++k) {
            const bool has = (valid[k] != 0) & (row[k] == row[k]); // NOLINT(misc-redundant-expression)
            row[k] = has ? row[k] : std::numeric_limits<T>::infinity();
        }
    }
}

template <class Value, class Stored>
void StoreEach(const Value* values, int begin, int columns, Stored* row)
{
    if (row != nullptr) {
        std::copy_n(values, columns, row + begin);
    }
}

} // namespace

/// What comes of a block of pixels.
struct RowCombiner::Pixels {
    double statistic[kColumns] = {};
    int count[kColumns] = {};
    int low[kColumns] = {};
    int high[kColumns] = {};
    bool wantsBounds = false;
    double keptLow[kColumns];
    double keptHigh[kColumns];
    bool wantsNoise;
    double noise[kColumns];

    explicit Pixels(const CombinedRow& result)
        : wantsBounds(result.keptLow != nullptr), wantsNoise(result.noise != nullptr)
    {
        std::fill_n(keptLow, wantsBounds ? kColumns : 0, -std::numeric_limits<double>::infinity());
        std::fill_n(keptHigh, wantsBounds ? kColumns : 0, std::numeric_limits<double>::infinity());
        std::fill_n(noise, wantsNoise ? kColumns : 0, std::numeric_limits<double>::quiet_NaN());
    }
};

CombineRule::CombineRule(CombineMethod method)
    : by(method == CombineMethod::kClippedMean ? CombineBy::kMean : CombineBy::kMedian),
      rejection(method == CombineMethod::kMedian ? nullptr : SigmaClip(3.0))
{}

RowCombiner::RowCombiner(CombineRule rule, Coverage coverage, const std::vector<double>& weights, double blank)
    : rule_(std::move(rule)), isMedianOfAll_(rule_.by == CombineBy::kMedian && rule_.rejection == nullptr),
      coverage_(coverage), blank_(static_cast<float>(blank))
{
    const bool isMean = rule_.by == CombineBy::kMean;
    std::vector<double> used;
    for (int i = 0; i < static_cast<int>(weights.size()); ++i) {
        if (!isMean || weights[i] > 0.0) {
            frames_.push_back(i);
            used.push_back(weights[i]);
        }
    }
    const int frames = static_cast<int>(frames_.size());
    lines_.resize(frames_.size());
    sorting_ = whole_ = SortingNetwork(frames);
    const std::size_t values = frames_.size() * kColumns;
    if (isMedianOfAll_) {
        whole_ = frames > 0 ? KeepWhatReaches(frames / 2, frames, sorting_) : whole_;
        floats_.resize(values);
        return;
    }
    doubles_.resize(values);
    if (isMean && std::any_of(used.begin(), used.end(), [&](double w) { return w != used[0]; })) {
        byFrame_.resize(values);
        statistic_ = WeightedMeanOfKept(std::move(used));
    } else {
        statistic_ = StatisticOfKept(rule_.by);
    }
}

int RowCombiner::Combine(const CombineLine* lines, int count, const CombinedRow& result)
{
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        lines_[i] = lines[frames_[i]];
    }
    const int frames = static_cast<int>(frames_.size());
    return isMedianOfAll_ ? CombineBlocks(Block<float>{floats_.data(), frames}, count, result)
                          : CombineBlocks(Block<double>{doubles_.data(), frames}, count, result);
}

template <class T>
int RowCombiner::CombineBlocks(const Block<T>& block, int count, const CombinedRow& result)
{
    int fewest = block.frames;
    for (int begin = 0; begin < count; begin += kColumns) {
        const int columns = std::min(kColumns, count - begin);
        Pixels pixels(result);
        const int least = columns == kColumns // a number that the compiler knows
                              ? Gather(lines_, begin, kColumns, block, pixels.count)
                              : Gather(lines_, begin, columns, block, pixels.count);
        const bool isWhole = least == block.frames;
        if (!isWhole) {
            MarkMissing(lines_, begin, columns, block);
        }
        if (block.frames > 0) {
            TakeStatistic(block, isWhole, pixels);
        }
        Store(pixels, isWhole, begin, columns, result);
        fewest = std::min(fewest, least);
    }
    return fewest;
}

// A median rounded to float is the median of the values rounded to float, and floats sort at twice the speed.
void RowCombiner::TakeStatistic(const Block<float>& block, bool isWhole, Pixels& pixels) const
{
    block.Apply(isWhole && !pixels.wantsNoise ? whole_ : sorting_);
    if (pixels.wantsNoise) {
        Kept all;
        std::copy_n(pixels.count, kColumns, all.count);
        NoiseOfKept(CombineBy::kMedian, block, all, pixels.noise);
    }
    if (isWhole) {
        std::copy_n(block.Row(block.frames / 2), kColumns, pixels.statistic);
        return;
    }
    for (int k = 0; k < kColumns; ++k) {
        pixels.statistic[k] = block.Row(pixels.count[k] / 2)[k];
    }
}

void RowCombiner::TakeStatistic(const Block<double>& block, bool isWhole, Pixels& pixels)
{
    std::copy_n(doubles_.begin(), byFrame_.size(), byFrame_.begin());
    block.Apply(sorting_);
    const SortedBlock sorted{{block.values, block.frames}, byFrame_.data(), pixels.count, isWhole};
    Kept kept;
    if (rule_.rejection != nullptr) {
        rule_.rejection->Choose(sorted, kept);
    } else {
        std::copy_n(pixels.count, kColumns, kept.count);
    }
    statistic_->Take(sorted, kept, pixels.statistic);
    if (pixels.wantsNoise) {
        statistic_->SetNoise(sorted, kept, pixels.statistic, pixels.noise);
    }
    const bool keepsNan = coverage_ == Coverage::kAll && byFrame_.empty() && block.frames > 1;
    for (int k = 0; k < kColumns; ++k) {
        const bool isClipped = kept.count[k] != 0;
        pixels.statistic[k] = isClipped || keepsNan ? pixels.statistic[k] : block.Row(0)[k];
        pixels.low[k] = isClipped ? kept.first[k] : 0;
        pixels.high[k] = isClipped ? pixels.count[k] - kept.first[k] - kept.count[k] : 0;
    }
    SetBounds(sorted, kept, pixels);
}

void RowCombiner::SetBounds(const SortedBlock& block, const Kept& kept, Pixels& pixels)
{
    for (int k = 0; k < kColumns && pixels.wantsBounds; ++k) {
        if (pixels.low[k] + pixels.high[k] > 0) {
            pixels.keptLow[k] = block.values.Row(kept.first[k])[k];
            pixels.keptHigh[k] = block.values.Row(kept.first[k] + kept.count[k] - 1)[k];
        }
    }
}

void RowCombiner::Store(const Pixels& pixels, bool isWhole, int begin, int columns, const CombinedRow& result) const
{
    float* const values = result.values + begin;
    for (int k = 0; k < columns; ++k) {
        values[k] = pixels.count[k] > 0 ? static_cast<float>(pixels.statistic[k]) : blank_;
    }
    const int needed = coverage_ == Coverage::kAll && !isWhole ? static_cast<int>(frames_.size()) : 0;
    for (int k = 0; k < columns && needed > 0; ++k) {
        values[k] = pixels.count[k] < needed ? Gap(begin + k) : values[k];
    }
    for (int k = 0; k < columns && result.noise != nullptr; ++k) {
        const bool isTold = pixels.count[k] >= needed;
        result.noise[begin + k] =
            isTold ? static_cast<float>(pixels.noise[k]) : std::numeric_limits<float>::quiet_NaN();
    }
    StoreEach(pixels.count, begin, columns, result.coverage);
    StoreEach(pixels.low, begin, columns, result.rejectedLow);
    StoreEach(pixels.high, begin, columns, result.rejectedHigh);
    StoreEach(pixels.keptLow, begin, columns, result.keptLow);
    StoreEach(pixels.keptHigh, begin, columns, result.keptHigh);
}

/// What a pixel shows that not all frames have although they should: the value that the last frame without it stands
/// for. NaN among the values gives NaN.
float RowCombiner::Gap(int x) const
{
    const auto last =
        std::find_if(lines_.rbegin(), lines_.rend(), [x](const auto& line) { return line.valid[x] == 0; });
    return last == lines_.rend() ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(last->values[x]);
}

} // namespace corvane
