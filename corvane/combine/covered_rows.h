#pragma once

#include <vector>

#include "corvane/combine/combine_rows.h"
#include "corvane/combine/sorting_network.h"
#include "corvane/platform/export.h"

namespace corvane {

template <class T>
struct Block;
struct Clipping;

/// Which pixels are taken a statistic of.
enum class Coverage {
    kAll, ///< those that every frame has; NaN counts as a value
    kAny, ///< those that some frame has, from the frames that do; NaN counts as missing
};

/// Rows that combining fills; null for those that are not wanted.
struct CoveredRow {
    float* values;
    float* coverage = nullptr;     ///< how many frames have the pixel; NaN counts as missing
    float* rejectedLow = nullptr;  ///< how many of their values the clipping dropped at the lower bound
    float* rejectedHigh = nullptr; ///< and at the upper one; the median drops none
};

/// Combines rows of frames that may lack pixels, pixel by pixel, with a weight for each frame.
///
/// - With `Coverage::kAll`, and weights that are all the same, the values are those of `RowCombiner`.
/// - With `Coverage::kAny` the same statistic is taken of the frames that have the pixel, and counts of theirs decide
///   what the middle is. Where no frame has it, the result is the blank. Where clipping would keep nothing, because all
///   values are equal or one is infinite, it drops nothing and the result is the smallest value.
/// - Weights count in the clipped mean alone: the sum of weight * value of what is kept, by the sum of those weights.
///   They take no part in the clipping. A frame of which the weight is not above 0 is left out as if it were not there;
///   other statistics ignore that too.
/// Missing values are sorted as infinities behind the others, so the work hardly depends on how many are missing.
class CORVANE_VISIBLE CoveredCombiner {
public:
    /// Prepares to combine lines of as many frames as there are weights [0..]. `blank` fills pixels that no frame has.
    CoveredCombiner(CombineMethod method, Coverage coverage, const std::vector<double>& weights, double blank);

    /// Combines `count` pixels of the lines (one per frame). Returns the smallest number of frames that have a pixel.
    int Combine(const CombineLine* lines, int count, const CoveredRow& result);

private:
    struct Pixels;

    template <class T>
    int CombineBlocks(const Block<T>& block, int count, const CoveredRow& result);
    void TakeStatistic(const Block<float>& block, bool isWhole, Pixels& pixels) const;
    void TakeStatistic(const Block<double>& block, bool isWhole, Pixels& pixels);
    template <class Count>
    void Clip(const Block<double>& block, const Count& count, Pixels& pixels) const;
    void WeightedMean(const Clipping& clipping, const Block<const double>& unsorted, Pixels& pixels) const;
    void Store(const Pixels& pixels, int begin, int columns, const CoveredRow& result) const;
    float Gap(int x) const;

    CombineMethod method_;
    Coverage coverage_;
    float blank_;
    bool isWeighted_ = false;
    std::vector<double> weights_; ///< of the frames that take part
    std::vector<int> frames_;     ///< which these are
    std::vector<CombineLine> lines_;
    std::vector<Exchange> whole_; ///< network for pixels that all frames have
    std::vector<Exchange> sorting_;
    std::vector<float> floats_;
    std::vector<double> doubles_;
    std::vector<double> unsorted_;
};

} // namespace corvane
