#pragma once

#include <algorithm>
#include <cstdint>

#include "corvane/core/blank.h"
#include "corvane/core/reductions.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// The positions begin .. end - 1 along one axis of an image of `size` pixels, those outside moved to the edge: the
/// pixels that they fall on, and how many fall on the outer ones. Nothing is walked outside the image, however far the
/// positions reach.
struct ClampedSpan {
    int first = 0;                 ///< the first pixel
    int count = 0;                 ///< pixels; 0 when there are no positions or no pixels
    std::uint64_t moreOnFirst = 0; ///< positions beyond one that fall on the first pixel
    std::uint64_t moreOnLast = 0;  ///< and on the last one

    ClampedSpan(std::int64_t begin, std::int64_t end, int size)
    {
        if (begin >= end || size <= 0) {
            return;
        }
        const std::int64_t low = std::clamp<std::int64_t>(begin, 0, size - 1);
        const std::int64_t high = std::clamp<std::int64_t>(end - 1, 0, size - 1);
        first = static_cast<int>(low);
        count = static_cast<int>(high - low) + 1;
        const std::int64_t more = end - begin - count;
        const std::int64_t before = std::clamp<std::int64_t>(low - begin, 0, more);
        moreOnFirst = static_cast<std::uint64_t>(before);
        moreOnLast = static_cast<std::uint64_t>(more - before);
    }

    int Last() const { return first + count - 1; }
    /// How many positions fall on pixel i of the span.
    std::uint64_t On(int i) const { return 1 + (i == first ? moreOnFirst : 0) + (i == Last() ? moreOnLast : 0); }
};

/// Visits row y of a region of positions, those outside moved to the edge, as runs of samples:
/// visit(samples, count, weight) says that each of the samples lies on `weight` positions. lengthOf(samples, count)
/// says how many samples of the row take part; positions behind the first that does not are left out.
template <class LengthOf, class Visit>
void VisitRuns(const CStlImage& image, int plane, const ClampedSpan& columns, const ClampedSpan& rows, int y,
               LengthOf lengthOf, Visit visit)
{
    const float* const row = image.GetImageAdr(columns.first, y, plane, 1);
    const int length = lengthOf(row, columns.count);
    const std::uint64_t weight = rows.On(y);
    visit(row, length, weight);
    if (length > 0 && columns.moreOnFirst > 0) {
        visit(row, 1, weight * columns.moreOnFirst);
    }
    if (length == columns.count && columns.moreOnLast > 0) {
        visit(row + length - 1, 1, weight * columns.moreOnLast);
    }
}

/// The sum of samples and how many they are, each as often as its weight says.
struct WeightedSum {
    double sum = 0.0;
    double count = 0.0;

    double Mean() const { return sum / count; }

    void Add(const WeightedSum& term)
    {
        sum += term.sum;
        count += term.count;
    }

    /// Calls visit(term) with what the samples that are not blank come to: terms that are to be added in their order.
    template <class Visit>
    static void VisitTerms(const float* samples, int length, std::uint64_t weight, BlankTest isBlank, Visit visit)
    {
        Sums<2> sums;
        // Multiplied, not chosen: the compiler makes a branch of a choice between adding and not.
        sums.Add(static_cast<std::size_t>(length), [=](std::size_t x, double* term) {
            term[1] = isBlank(samples[x]) ? 0.0 : 1.0;
            term[0] = term[1] * samples[x];
        });
        for (int lane = 0; lane < sums.kLanes; ++lane) {
            visit(WeightedSum{sums.Lane(0, lane) * static_cast<double>(weight),
                              sums.Lane(1, lane) * static_cast<double>(weight)});
        }
    }
};

} // namespace corvane
