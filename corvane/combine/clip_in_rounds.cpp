#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "corvane/combine/kept_moments.h"

namespace corvane {
namespace {

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
            if (kept.count[k] >= kFewestClipped) {
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
            scales[k] = kept.count[k] >= kFewestClipped ? kNormal * MedianDeviation(values, kept, k) : 0.0;
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

/// Deviations of values that are cut at bounds which depend on the deviation.
class SetWinsorizedDeviations {
public:
    void operator()(const Block<double>& values, const Kept& kept, double* scales) const
    {
        Middle middle;
        for (int k = 0; k < kColumns; ++k) {
            SetMiddle(values, kept, k, middle);
        }
        SetDeviations()(values, kept, scales);
        bool isSettled[kColumns] = {};
        while (!std::all_of(isSettled, isSettled + kColumns, std::identity())) {
            double next[kColumns];
            SetBoundedDeviations(values, kept, middle, scales, next);
            for (int k = 0; k < kColumns; ++k) {
                const double scale = scales[k];
                const bool shrinksOn = next[k] < scale && kReach * scale <= middle.nearest[k];
                scales[k] = isSettled[k] ? scale : shrinksOn ? 0.0 : next[k];
                isSettled[k] |= !(std::fabs(next[k] - scale) >= kSettled * scale) || scale == 0.0;
            }
        }
    }

private:
    static constexpr double kReach = 1.5;
    static constexpr double kLoss = 1.134; // of the deviation of a normal distribution, by its cut tails
    static constexpr double kSettled = 5e-4;

    struct Middle {
        double median[kColumns];
        double nearest[kColumns]; ///< distance of the nearest other value; bounds within it that shrink go on to 0
    };

    static void SetMiddle(const Block<double>& values, const Kept& kept, int k, Middle& middle)
    {
        middle.median[k] = kept.count[k] > 0 ? MiddleOfKept(values, kept, k) : 0.0;
        middle.nearest[k] = std::numeric_limits<double>::infinity();
        for (int i = kept.first[k]; i < kept.first[k] + kept.count[k]; ++i) {
            const double off = std::fabs(values.Row(i)[k] - middle.median[k]);
            middle.nearest[k] = off > 0.0 ? std::min(off, middle.nearest[k]) : middle.nearest[k];
        }
    }

    static void SetBoundedDeviations(const Block<double>& values, const Kept& kept, const Middle& middle,
                                     const double* scales, double* next)
    {
        double low[kColumns];
        double high[kColumns];
        for (int k = 0; k < kColumns; ++k) {
            low[k] = middle.median[k] - kReach * scales[k];
            high[k] = middle.median[k] + kReach * scales[k];
        }
        const auto bounded = [&](double v, int k) { return v < low[k] ? low[k] : v > high[k] ? high[k] : v; };
        DeviationsOfKept(values, kept, bounded, next);
        for (int k = 0; k < kColumns; ++k) {
            next[k] *= kLoss;
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
