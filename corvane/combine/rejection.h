#pragma once

#include <memory>

#include "corvane/combine/pixel_block.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Which values of a block of pixels count: of each pixel those at `count` places from `first` on. Those before are too
/// low, those behind too high.
struct Kept {
    int first[kColumns] = {};
    int count[kColumns] = {};

    bool Has(int place, int k) const { return (place >= first[k]) & (place < first[k] + count[k]); }
};

/// Decides which values of a pixel count.
class CORVANE_VISIBLE Rejection {
public:
    virtual ~Rejection() = default;
    /// Chooses the values of each pixel of a block. It may change their order, but in each of the three parts they stay
    /// ascending.
    virtual void Choose(const SortedBlock& block, Kept& kept) const = 0;
};

/// What counts lies within so many standard deviations, of all values about their mean, of the median; its bounds do
/// not count.
CORVANE_VISIBLE std::unique_ptr<const Rejection> SigmaClip(double sigmas);

/// How far off a value may lie, and how often that is judged.
struct ClipLimits {
    double low = 3.0; ///< below the middle, in scales
    double high = 3.0;
    int rounds = 0; ///< at most; 0: until nothing changes
};

/// @name Rejection in rounds
/// Each round judges by what the one before has left, until nothing changes or fewer than 3 values are left; bounds
/// count. The median of an even number is the mean of the middle two.
/// @{

/// About the median, by the sample standard deviation.
CORVANE_VISIBLE std::unique_ptr<const Rejection> ClipByDeviation(const ClipLimits& limits);
/// About the median, by 1.4826 times the median absolute deviation from it.
CORVANE_VISIBLE std::unique_ptr<const Rejection> ClipByMedianDeviation(const ClipLimits& limits);
/// About the median, by a sample standard deviation that outliers hardly widen: values beyond 1.5 deviations of the
/// median count as that bound, and the deviation is taken again, times 1.134, until it changes by less than 5e-4 of
/// itself. P. J. Huber, Robust Statistics, 1981.
CORVANE_VISIBLE std::unique_ptr<const Rejection> ClipByWinsorizedDeviation(const ClipLimits& limits);
/// About a line through the values in ascending order, against their rank, by the mean absolute deviation from it.
CORVANE_VISIBLE std::unique_ptr<const Rejection> ClipByLine(const ClipLimits& limits);
/// @}

/// Drops the extreme studentised deviates, at most 30 % of the values, at a significance of 0.05; for pixels of at most
/// so many values. B. Rosner, Technometrics 25, 165 (1983).
CORVANE_VISIBLE std::unique_ptr<const Rejection> DropDeviates(int frames);

/// Drops so many of the lowest and of the highest values; of fewer values than that, and one, the middle one stays.
CORVANE_VISIBLE std::unique_ptr<const Rejection> DropEnds(int lowest, int highest);

} // namespace corvane
