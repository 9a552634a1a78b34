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
};

/// The median; the smallest value where none counts.
std::unique_ptr<const Statistic> MedianOfKept();
/// The mean; NaN where none counts.
std::unique_ptr<const Statistic> MeanOfKept();
/// The mean with a weight for each frame, which asks for the values by frame; NaN where none counts.
std::unique_ptr<const Statistic> WeightedMeanOfKept(std::vector<double> weights);

} // namespace corvane
