#include <cmath>
#include <vector>

#include "corvane/combine/kept_moments.h"
#include "corvane/core/turn.h"

namespace corvane {
namespace {

constexpr double kSignificance = 0.05;
constexpr double kMostOutliers = 0.3; // of the values

/// The probability that a value of Student's distribution lies beyond t, on either side, in plain arithmetic: the same
/// bits on every system. M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions, 1964, 26.7.3 and 26.7.4.
double TwoTails(double t, int freedom)
{
    constexpr double kPi = 3.14159265358979323846;
    const double length = std::sqrt(freedom + t * t);
    const double sine = t / length;
    const double cosine = std::sqrt(static_cast<double>(freedom)) / length;
    const bool isOdd = freedom % 2 == 1;
    double term = isOdd ? cosine : 1.0;
    double sum = freedom == 1 ? 0.0 : term;
    for (int i = isOdd ? 3 : 2; i < freedom; i += 2) {
        term *= cosine * cosine * (i - 1) / i;
        sum += term;
    }
    const double between =
        isOdd ? (Direction(t, std::sqrt(static_cast<double>(freedom))) + sine * sum) * 2.0 / kPi : sine * sum;
    return 1.0 - between;
}

/// Beyond what Student's distribution lies with a probability, on either side, by halving.
double StudentQuantile(double probability, int freedom)
{
    double low = 0.0;
    double high = 1.0;
    while (TwoTails(high, freedom) > probability) {
        high *= 2.0;
    }
    while (true) {
        const double middle = 0.5 * (low + high);
        if (middle <= low || middle >= high) {
            return middle;
        }
        (TwoTails(middle, freedom) > probability ? low : high) = middle;
    }
}

/// How many standard deviations the farthest of `count` values may lie from their mean.
double CriticalDeviate(int count)
{
    const double t = StudentQuantile(kSignificance / count, count - 2);
    return (count - 1) * t / std::sqrt((count - 2 + t * t) * count);
}

/// A pixel's values from one place to before another, with what their mean and deviation are made of.
class Range {
public:
    Range(const Block<double>& values, int k, int count) : values_(values), k_(k), end_(count)
    {
        double sum = 0.0;
        for (int i = 0; i < count; ++i) {
            sum += At(i);
        }
        centre_ = sum / count;
        for (int i = 0; i < count; ++i) {
            Add(At(i), 1.0);
        }
    }

    int First() const { return first_; }
    int Count() const { return end_ - first_; }

    /// How many standard deviations the farther end lies from the mean. The end is dropped.
    double DropFarther()
    {
        const double mean = centre_ + sum_ / Count();
        const double deviation = std::sqrt((squares_ - sum_ * sum_ / Count()) / (Count() - 1));
        const double down = mean - At(first_);
        const double up = At(end_ - 1) - mean;
        Add(down > up ? At(first_) : At(end_ - 1), -1.0);
        down > up ? ++first_ : --end_;
        return (down > up ? down : up) / deviation;
    }

private:
    double At(int i) const { return values_.Row(i)[k_]; }

    /// Sums about the mean of all lose no digits.
    void Add(double v, double sign)
    {
        const double off = v - centre_;
        sum_ += sign * off;
        squares_ += sign * off * off;
    }

    const Block<double>& values_;
    int k_;
    int first_ = 0;
    int end_;
    double centre_ = 0.0;
    double sum_ = 0.0;
    double squares_ = 0.0;
};

class DeviatesDropped final : public Rejection {
public:
    explicit DeviatesDropped(int frames)
    {
        for (int count = 0; count <= frames; ++count) {
            critical_.push_back(count < kFewestClipped ? 0.0 : CriticalDeviate(count));
        }
    }

    void Choose(const SortedBlock& block, Kept& kept) const override
    {
        for (int k = 0; k < kColumns; ++k) {
            kept.count[k] = block.count[k];
            const int most = static_cast<int>(kMostOutliers * block.count[k]);
            Range left(block.values, k, block.count[k]);
            for (int i = 0; i < most && left.Count() >= kFewestClipped; ++i) {
                const double critical = critical_[static_cast<std::size_t>(left.Count())];
                if (left.DropFarther() > critical) { // with all that were dropped before
                    kept.first[k] = left.First();
                    kept.count[k] = left.Count();
                }
            }
        }
    }

private:
    std::vector<double> critical_; ///< by the number of values
};

} // namespace

std::unique_ptr<const Rejection> DropDeviates(int frames)
{
    return std::make_unique<DeviatesDropped>(frames);
}

} // namespace corvane
