#include "corvane/combine/statistic.h"

#include <cmath>
#include <limits>
#include <utility>

#include "corvane/combine/kept_moments.h"

namespace corvane {
namespace {

/// A statistic that takes no weights.
template <CombineBy by>
class Even : public Statistic {
    void SetNoise(const SortedBlock& block, const Kept& kept, const double*, double* noise) const override
    {
        NoiseOfKept(by, block.values, kept, noise);
    }
};

/// The value at one of the places that count, which placeOf(count) chooses.
template <CombineBy by, auto placeOf>
class ValueAt final : public Even<by> {
    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        for (int k = 0; k < kColumns; ++k) {
            const int place = kept.count[k] == 0 ? 0 : kept.first[k] + placeOf(kept.count[k]);
            result[k] = block.values.Row(place)[k];
        }
    }
};

using Median = ValueAt<CombineBy::kMedian, [](int count) { return count / 2; }>;
using Largest = ValueAt<CombineBy::kMax, [](int count) { return count - 1; }>;
using Smallest = ValueAt<CombineBy::kMin, [](int) { return 0; }>;

// The sum carries its rounding error along, so that it is as exact as one in extended precision.
// D. E. Knuth, The Art of Computer Programming 2, 1969, section 4.2.2.
template <CombineBy by>
class Sum final : public Even<by> {
    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        double sum[kColumns] = {};
        double error[kColumns] = {};
        for (int i = 0; i < block.values.frames; ++i) {
            for (int k = 0; k < kColumns; ++k) {
                const double term = kept.Has(i, k) ? block.values.Row(i)[k] : 0.0;
                const double next = sum[k] + term;
                const double part = next - sum[k];
                error[k] += (sum[k] - (next - part)) + (term - part);
                sum[k] = next;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            result[k] = (sum[k] + error[k]) / (by == CombineBy::kMean ? kept.count[k] : 1);
        }
    }
};

/// Tells by their values which of a pixel count; of equal ones all do when one does.
class KeptValues {
public:
    KeptValues(const SortedBlock& block, const Kept& kept) : values_(block.values), kept_(kept)
    {
        for (int k = 0; k < kColumns; ++k) {
            const int end = kept.first[k] + kept.count[k];
            low_[k] = kept.count[k] > 0 ? values_.Row(kept.first[k])[k] : kInfinity;
            high_[k] = kept.count[k] > 0 ? values_.Row(end - 1)[k] : -kInfinity;
            hasGaps_ |= kept.first[k] > 0 && values_.Row(kept.first[k] - 1)[k] > low_[k];
            hasGaps_ |= end < values_.frames && values_.Row(end)[k] < high_[k];
        }
    }

    bool HasGaps() const { return hasGaps_; } ///< others lie between those that count
    bool IsWithin(int k, double v) const { return (v >= low_[k]) & (v <= high_[k]); }
    bool Has(int k, double v) const
    {
        for (int i = kept_.first[k]; i < kept_.first[k] + kept_.count[k]; ++i) {
            if (values_.Row(i)[k] == v) {
                return true;
            }
        }
        return false;
    }

private:
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();

    Block<double> values_;
    const Kept& kept_;
    double low_[kColumns];
    double high_[kColumns];
    bool hasGaps_ = false;
};

class WeightedMean final : public Statistic {
public:
    explicit WeightedMean(std::vector<double> weights) : weights_(std::move(weights)) {}

    void Take(const SortedBlock& block, const Kept& kept, double* result) const override
    {
        WithKept(block, kept, [&](auto has) { TakeOf(block, has, result); });
    }

    /// Each value scatters about the mean by the noise of its own frame, so frames may differ in it. What the mean has
    /// taken of the scatter is given back, as of weights that go by the noise.
    void SetNoise(const SortedBlock& block, const Kept& kept, const double* result, double* noise) const override
    {
        WithKept(block, kept, [&](auto has) { SetNoiseOf(block, has, result, noise); });
        for (int k = 0; k < kColumns; ++k) {
            noise[k] = kept.count[k] > 1 ? noise[k] : std::numeric_limits<double>::quiet_NaN();
        }
    }

private:
    /// Calls visit with what tells whether a value of a pixel counts.
    template <class Visit>
    static void WithKept(const SortedBlock& block, const Kept& kept, Visit visit)
    {
        const KeptValues values(block, kept);
        if (values.HasGaps()) {
            visit([&](int k, double v) { return values.Has(k, v); });
        } else {
            visit([&](int k, double v) { return values.IsWithin(k, v); });
        }
    }

    template <class Has>
    void SetNoiseOf(const SortedBlock& block, Has has, const double* result, double* noise) const
    {
        const Block<const double> frames{block.byFrame, block.values.frames};
        double squares[kColumns] = {};
        double weights[kColumns] = {};
        double products[kColumns] = {};
        for (int i = 0; i < frames.frames; ++i) {
            const double weight = weights_[static_cast<std::size_t>(i)];
            for (int k = 0; k < kColumns; ++k) {
                const double v = frames.Row(i)[k];
                const double used = has(k, v) ? weight : 0.0;
                const double off = has(k, v) ? weight * (v - result[k]) : 0.0;
                products[k] += used * weights[k];
                weights[k] += used;
                squares[k] += off * off;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            noise[k] = std::sqrt(squares[k] / (2.0 * products[k]));
        }
    }

    template <class Has>
    void TakeOf(const SortedBlock& block, Has has, double* result) const
    {
        const Block<const double> frames{block.byFrame, block.values.frames};
        double sum[kColumns] = {};
        double weights[kColumns] = {};
        for (int i = 0; i < frames.frames; ++i) {
            const double weight = weights_[static_cast<std::size_t>(i)];
            for (int k = 0; k < kColumns; ++k) {
                const double v = frames.Row(i)[k];
                sum[k] += weight * (has(k, v) ? v : 0.0);
                weights[k] += has(k, v) ? weight : 0.0;
            }
        }
        for (int k = 0; k < kColumns; ++k) {
            result[k] = sum[k] / weights[k];
        }
    }

    std::vector<double> weights_;
};

} // namespace

std::unique_ptr<const Statistic> StatisticOfKept(CombineBy by)
{
    switch (by) {
    case CombineBy::kMedian:
        return std::make_unique<Median>();
    case CombineBy::kSum:
        return std::make_unique<Sum<CombineBy::kSum>>();
    case CombineBy::kMax:
        return std::make_unique<Largest>();
    case CombineBy::kMin:
        return std::make_unique<Smallest>();
    default:
        return std::make_unique<Sum<CombineBy::kMean>>();
    }
}

std::unique_ptr<const Statistic> WeightedMeanOfKept(std::vector<double> weights)
{
    return std::make_unique<WeightedMean>(std::move(weights));
}

} // namespace corvane
