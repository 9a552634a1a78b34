#pragma once

#include <memory>
#include <vector>

#include "corvane/combine/rejection.h"

namespace corvane {

/// Makes one value of those that count.
class Statistic {
public:
    virtual ~Statistic() = default;
    /// Sets the value of each pixel of a block.
    virtual void Take(const SortedBlock& block, const Kept& kept, double* result) const = 0;
    /// Sets the standard deviation of that value, as what counts tells it by how it scatters; NaN where that is fewer
    /// than 2 values, and of a largest or smallest one.
    virtual void SetNoise(const SortedBlock& block, const Kept& kept, const double* result, double* noise) const = 0;
};

/// What is made of the values that count.
enum class CombineBy {
    kMean,
    kMedian, ///< of an even number the upper of the two middle values
    kSum,
    kMax,
    kMin,
};

/// A statistic of what counts. Where nothing does, mean and sum are NaN and 0, the others the smallest value.
std::unique_ptr<const Statistic> StatisticOfKept(CombineBy by);
/// The mean with a weight for each frame, which asks for the values by frame; NaN where none counts.
std::unique_ptr<const Statistic> WeightedMeanOfKept(std::vector<double> weights);

} // namespace corvane
