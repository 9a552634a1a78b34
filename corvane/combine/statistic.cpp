#include "corvane/combine/statistic.h"

#include <utility>

namespace corvane {
namespace {

class Median final : public Statistic {
    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        for (int k = 0; k < kColumns; ++k) {
            const int place = kept.count[k] == 0 ? 0 : kept.first[k] + kept.count[k] / 2;
            result[k] = block.values.Row(place)[k];
        }
    }
};

// The sum carries its rounding error along, so that it is as exact as one in extended precision.
// D. E. Knuth, The Art of Computer Programming 2, 1969, section 4.2.2.
class Mean final : public Statistic {
    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        double sum[kColumns] = {};
        double error[kColumns] = {};
        for (int i = 0; i < block.values.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double v = block.values.Row(i)[k];
                const double term = kept.Has(k, v) ? v : 0.0;
                const double next = sum[k] + term;
                const double part = next - sum[k];
                error[k] += (sum[k] - (next - part)) + (term - part);
                sum[k] = next;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            result[k] = (sum[k] + error[k]) / kept.count[k];
        }
    }
};

class WeightedMean final : public Statistic {
public:
    explicit WeightedMean(std::vector<double> weights) : weights_(std::move(weights)) {}

    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        const Block<const double> frames{block.byFrame, block.values.frames};
        double sum[kColumns] = {};
        double weights[kColumns] = {};
        for (int i = 0; i < frames.frames; ++i) {
            const double weight = weights_[static_cast<std::size_t>(i)];
            for (int k = 0; k < kColumns; ++k) {
                const double v = frames.Row(i)[k];
                sum[k] += weight * (kept.Has(k, v) ? v : 0.0);
                weights[k] += kept.Has(k, v) ? weight : 0.0;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            result[k] = sum[k] / weights[k];
        }
    }

private:
    std::vector<double> weights_;
};

} // namespace

std::unique_ptr<const Statistic> MedianOfKept()
{
    return std::make_unique<Median>();
}

std::unique_ptr<const Statistic> MeanOfKept()
{
    return std::make_unique<Mean>();
}

std::unique_ptr<const Statistic> WeightedMeanOfKept(std::vector<double> weights)
{
    return std::make_unique<WeightedMean>(std::move(weights));
}

} // namespace corvane
