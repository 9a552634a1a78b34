#pragma once

#include <cmath>
#include <limits>
#include <numbers>

#include "corvane/combine/rejection.h"
#include "corvane/combine/statistic.h"

namespace corvane {

inline constexpr int kFewestClipped = 3; // of fewer values nothing is dropped

/// The sample standard deviations of what counts of a block, of which valueOf(v, k) is taken; 0 of fewer than 2.
template <class T, class ValueOf>
void DeviationsOfKept(const Block<T>& values, const Kept& kept, ValueOf valueOf, double* deviations)
{
    double mean[kColumns] = {};
    double squares[kColumns] = {};
    for (int i = 0; i < values.frames; ++i) {
        for (int k = 0; k < kColumns; ++k) {
            mean[k] += kept.Has(i, k) ? valueOf(values.Row(i)[k], k) : 0.0;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        mean[k] /= kept.count[k];
    }
    for (int i = 0; i < values.frames; ++i) {
        for (int k = 0; k < kColumns; ++k) {
            const double off = valueOf(values.Row(i)[k], k) - mean[k];
            squares[k] += kept.Has(i, k) ? off * off : 0.0;
        }
    }
    for (int k = 0; k < kColumns; ++k) {
        deviations[k] = kept.count[k] > 1 ? std::sqrt(squares[k] / (kept.count[k] - 1)) : 0.0;
    }
}

/// The standard deviations of a mean, median or sum of what counts of a block, by the sample deviation of that; NaN of
/// fewer than 2 values, and of what is no such statistic. That of the median is the one of many normal values.
template <class T>
void NoiseOfKept(CombineBy by, const Block<T>& values, const Kept& kept, double* noise)
{
    const bool isTold = by != CombineBy::kMin && by != CombineBy::kMax;
    const double ofMean = by == CombineBy::kMedian ? std::sqrt(std::numbers::pi / 2.0) : 1.0;
    DeviationsOfKept(
        values, kept, [](double v, int) { return v; }, noise);
    for (int k = 0; k < kColumns; ++k) {
        const double root = std::sqrt(static_cast<double>(kept.count[k]));
        const double factor = by == CombineBy::kSum ? root : ofMean / root;
        noise[k] = isTold && kept.count[k] > 1 ? factor * noise[k] : std::numeric_limits<double>::quiet_NaN();
    }
}

/// The median of what counts of one pixel; of an even number the mean of the middle two.
inline double MiddleOfKept(const Block<double>& values, const Kept& kept, int k)
{
    const double below = values.Row(kept.first[k] + (kept.count[k] - 1) / 2)[k];
    const double above = values.Row(kept.first[k] + kept.count[k] / 2)[k];
    return below == above ? above : 0.5 * (below + above);
}

/// Leaves out what lies beyond two bounds. True when something did.
inline bool NarrowKept(const Block<double>& values, double low, double high, int k, Kept& kept)
{
    const int before = kept.count[k];
    while (kept.count[k] > 0 && values.Row(kept.first[k])[k] < low) {
        ++kept.first[k];
        --kept.count[k];
    }
    while (kept.count[k] > 0 && values.Row(kept.first[k] + kept.count[k] - 1)[k] > high) {
        --kept.count[k];
    }
    return kept.count[k] < before;
}

} // namespace corvane
