#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "corvane/combine/sorting_network.h"
#include "corvane/combine/statistic.h"
#include "corvane/platform/export.h"

namespace corvane {

/// What is taken of the values that many frames have at one pixel.
enum class CombineMethod {
    kMedian,        ///< the median; of an even number the upper of the two middle values
    kClippedMedian, ///< the median of what lies within 3 sigma of the median
    kClippedMean,   ///< the mean of what lies within 3 sigma of the median
};

/// How the values that many frames have at one pixel become one.
struct CombineRule {
    CombineBy by = CombineBy::kMean;
    std::shared_ptr<const Rejection> rejection{}; ///< null: all count

    CombineRule() = default;
    CombineRule(CombineBy statistic, std::shared_ptr<const Rejection> which)
        : by(statistic), rejection(std::move(which))
    {}
    CORVANE_VISIBLE CombineRule(CombineMethod method); // NOLINT(google-explicit-constructor): a method is a rule
};

/// Which pixels are taken a statistic of.
enum class Coverage {
    kAll, ///< those that every frame has; NaN counts as a value
    kAny, ///< those that some frame has, from the frames that do; NaN counts as missing
};

/// One frame's sampled row: values and validity (non-zero for usable).
struct CombineLine {
    const double* values;
    const int* valid;
};

/// Rows that combining fills; null for those that are not wanted.
struct CombinedRow {
    float* values;
    float* coverage = nullptr;     ///< how many frames have the pixel; NaN counts as missing
    float* rejectedLow = nullptr;  ///< how many of their values the clipping dropped at the lower bound
    float* rejectedHigh = nullptr; ///< and at the upper one; the median drops none
    double* keptLow = nullptr;     ///< the lowest value that counts; minus infinity where none is dropped
    double* keptHigh = nullptr;    ///< the highest one; infinity where none is dropped
    float* noise = nullptr;        ///< standard deviation of the value; NaN where it cannot be told
};

/// Combines rows of frames that may lack pixels, pixel by pixel, with a weight for each frame.
///
/// - With `Coverage::kAll` a pixel that a frame lacks gets the value of the last such frame, in the order given. A NaN
///   among the values makes the result NaN, and so does a mean of which the clipping keeps nothing.
/// - With `Coverage::kAny` the same statistic is taken of the frames that have the pixel, and counts of theirs decide
///   what the middle is. Where no frame has it, the result is the blank. Where clipping would keep nothing, because all
///   values are equal or one is infinite, it drops nothing and the result is the smallest value.
/// - Weights count in the mean alone: the sum of weight * value of what is kept, by the sum of those weights. They take
///   no part in the clipping. A frame of which the weight is not above 0 is left out as if it were not there; other
///   statistics ignore that too.
///
/// The noise of a value is told by those that count, of which at least 2 must be there, v of weight w:
/// - of the mean: the root of the sum of w^2 (v - mean)^2, by (sum w)^2 - sum w^2. That is s / sqrt(n) for n values of
///   equal weights and sample deviation s, and right on average where weights go by 1 / noise^2, whatever the lights'
///   noise. Of a sum it is s sqrt(n); of a median sqrt(pi / 2) s / sqrt(n), up to a twelfth too much for few values.
/// - It is as uncertain as a deviation of n values: by 1 part in sqrt(2 n - 2). Rejection drops good values, too, of
///   which it does not know: of normal values it is 9 % too low when 5 of them go through winsorized deviations, 1 %
///   when 24 go through deviations.
/// - The largest and the smallest value have none, nor pixels that show no statistic.
///
/// The values of a block of pixels are sorted together by a network of minima and maxima, missing ones as infinities
/// behind the others, so the work per pixel hardly depends on the values or on how many are missing. What counts of
/// them is for a `Rejection` to say, what is made of that for a `Statistic`.
class CORVANE_VISIBLE RowCombiner {
public:
    /// Prepares to combine lines of as many frames as there are weights [0..]. `blank` fills pixels that no frame has.
    RowCombiner(CombineRule rule, Coverage coverage, const std::vector<double>& weights, double blank);

    /// Combines `count` pixels of the lines (one per frame). Returns the smallest number of frames that have a pixel.
    int Combine(const CombineLine* lines, int count, const CombinedRow& result);

    std::size_t Frames() const { return frames_.size(); } ///< The number of frames that take part.

private:
    struct Pixels;

    template <class T>
    int CombineBlocks(const Block<T>& block, int count, const CombinedRow& result);
    void TakeStatistic(const Block<float>& block, bool isWhole, Pixels& pixels) const;
    void TakeStatistic(const Block<double>& block, bool isWhole, Pixels& pixels);
    static void SetBounds(const SortedBlock& block, const Kept& kept, Pixels& pixels);
    void Store(const Pixels& pixels, bool isWhole, int begin, int columns, const CombinedRow& result) const;
    float Gap(int x) const;

    CombineRule rule_;
    bool isMedianOfAll_;
    Coverage coverage_;
    float blank_;
    std::unique_ptr<const Statistic> statistic_;
    std::vector<int> frames_; ///< those that take part
    std::vector<CombineLine> lines_;
    std::vector<Exchange> whole_; ///< network for pixels that all frames have
    std::vector<Exchange> sorting_;
    std::vector<float> floats_;
    std::vector<double> doubles_;
    std::vector<double> byFrame_; ///< the same unsorted, for a mean with weights
};

} // namespace corvane
