#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "corvane/combine/kept_moments.h"

namespace corvane {
namespace {

constexpr int kFewest = 3; // of fewer values nothing is dropped

/// Clips about the median, by scales that `SetScales(values, kept, scales)` finds.
template <class SetScales>
class ClipInRounds final : public Rejection {
public:
    explicit ClipInRounds(const ClipLimits& limits) : limits_(limits) {}

    void Choose(const SortedBlock& block, Kept& kept) const override
    {
        std::copy_n(block.count, kColumns, kept.count);
        const int most = limits_.rounds > 0 ? limits_.rounds : std::numeric_limits<int>::max();
        for (int round = 0; round < most && Clip(block.values, kept); ++round) {
        }
    }

private:
    /// One round. False when nothing has changed.
    bool Clip(const Block<double>& values, Kept& kept) const
    {
        double scales[kColumns];
        SetScales()(values, kept, scales);
        bool isChanged = false;
        for (int k = 0; k < kColumns; ++k) {
            if (kept.count[k] >= kFewest) {
                const double median = MiddleOfKept(values, kept, k);
                const double low = median - limits_.low * scales[k];
                isChanged |= NarrowKept(values, low, median + limits_.high * scales[k], k, kept);
            }
        }
        return isChanged;
    }

    ClipLimits limits_;
};

struct SetDeviations {
    void operator()(const Block<double>& values, const Kept& kept, double* scales) const
    {
        DeviationsOfKept(
            values, kept, [](double v, int) { return v; }, scales);
    }
};

struct SetMedianDeviations {
    void operator()(const Block<double>& values, const Kept& kept, double* scales) const
    {
        constexpr double kNormal = 1.4826; // standard deviations of a normal distribution in a median deviation
        for (int k = 0; k < kColumns; ++k) {
            scales[k] = kept.count[k] >= kFewest ? kNormal * MedianDeviation(values, kept, k) : 0.0;
        }
    }

private:
    /// Deviations grow from the middle to both ends, so the smallest half of them is found by going outwards.
    static double MedianDeviation(const Block<double>& values, const Kept& kept, int k)
    {
        const double median = MiddleOfKept(values, kept, k);
        const int count = kept.count[k];
        int below = kept.first[k] + (count - 1) / 2;
        int above = below + 1;
        double last = 0.0;
        double before = 0.0;
        for (int i = 0; i <= count / 2; ++i) {
            const bool hasBelow = below >= kept.first[k];
            const bool hasAbove = above < kept.first[k] + count;
            const double down = hasBelow ? median - values.Row(below)[k] : 0.0;
            const double up = hasAbove ? values.Row(above)[k] - median : 0.0;
            const bool isDown = hasBelow && (!hasAbove || down <= up);
            before = last;
            last = isDown ? down : up;
            (isDown ? below : above) += isDown ? -1 : 1;
        }
        return count % 2 == 1 ? last : 0.5 * (before + last);
    }
};

struct SetWinsorizedDeviations {
    void operator()(const Block<double>& values, const Kept& kept, double* scales) const
    {
        constexpr double kReach = 1.5;
        constexpr double kLoss = 1.134; // of the deviation of a normal distribution, by its cut tails
        constexpr double kSettled = 5e-4;
        constexpr int kMostRounds = 100;
        double low[kColumns];
        double high[kColumns];
        double next[kColumns];
        bool isSettled[kColumns] = {};
        SetDeviations()(values, kept, scales);
        for (int round = 0; round < kMostRounds && !std::all_of(isSettled, isSettled + kColumns, std::identity());
             ++round) {
            for (int k = 0; k < kColumns; ++k) {
                const double median = kept.count[k] > 0 ? MiddleOfKept(values, kept, k) : 0.0;
                low[k] = median - kReach * scales[k];
                high[k] = median + kReach * scales[k];
            }
            const auto bounded = [&](double v, int k) { return v < low[k] ? low[k] : v > high[k] ? high[k] : v; };
            DeviationsOfKept(values, kept, bounded, next);
            for (int k = 0; k < kColumns; ++k) {
                const double scale = isSettled[k] ? scales[k] : kLoss * next[k];
                isSettled[k] |= !(std::fabs(scale - scales[k]) >= kSettled * scales[k]) || scale == scales[k];
                scales[k] = scale;
            }
        }
    }
};

} // namespace

std::unique_ptr<const Rejection> ClipByDeviation(const ClipLimits& limits)
{
    return std::make_unique<ClipInRounds<SetDeviations>>(limits);
}

std::unique_ptr<const Rejection> ClipByMedianDeviation(const ClipLimits& limits)
{
    return std::make_unique<ClipInRounds<SetMedianDeviations>>(limits);
}

std::unique_ptr<const Rejection> ClipByWinsorizedDeviation(const ClipLimits& limits)
{
    return std::make_unique<ClipInRounds<SetWinsorizedDeviations>>(limits);
}

} // namespace corvane
