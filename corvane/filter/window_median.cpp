#include "corvane/filter/window_median.h"

#include <algorithm>

#include "corvane/filter/sorted_lists.h"

namespace corvane::filter {
namespace {

constexpr int kReach = 2;
constexpr int kSize = 2 * kReach + 1;
constexpr int kMedianBlock = 64; // columns whose lists stay in the nearest cache
constexpr int kWide = kMedianBlock + 2 * kReach;

/// The columns of five rows in ascending order, from the first window of a block to the last.
struct SortedColumns {
    float lists[kSize][kWide];

    SortedColumns(const PlaneView& plane, int x, int y, int count)
    {
        const float* const rows[] = {plane.Row(y - 2) + x, plane.Row(y - 1) + x, plane.Row(y) + x, plane.Row(y + 1) + x,
                                     plane.Row(y + 2) + x};
        for (int i = 0; i < count; ++i) {
            const auto one = [&](int row) { return Sorted<1>{rows[row][i]}; };
            StoreColumn(Merge(Merge(Merge(one(0), one(1)), one(2)), Merge(one(3), one(4))), lists, i);
        }
    }

    Sorted<kSize> Of(int i) const { return LoadColumn(lists, i); }
};

/// Medians of windows that lack nothing.
void InnerMedians(const PlaneView& plane, int x, int y, int count, float* __restrict medians)
{
    const SortedColumns columns(plane, x - kReach, y, count + 2 * kReach);
    for (int i = 0; i < count; ++i) {
        const auto some = Merge(Merge(columns.Of(i), columns.Of(i + 1)), columns.Of(i + 2));
        medians[i] = RankOfBoth<kSize * kSize / 2>(some, Merge(columns.Of(i + 3), columns.Of(i + 4)));
    }
}

/// Makes the medians anew whose windows hold NaN, which sorting is not fit for.
void MendMedians(const PlaneView& plane, int x, int y, int count, float* medians)
{
    bool isBad[kWide] = {};
    for (int ny = y - kReach; ny <= y + kReach; ++ny) {
        const float* const row = plane.Row(ny) + x - kReach;
        for (int i = 0; i < count + 2 * kReach; ++i) {
            isBad[i] |= row[i] != row[i]; // NOLINT(misc-redundant-expression): true for NaN alone
        }
    }
    if (!std::any_of(isBad, isBad + count + 2 * kReach, [](bool bad) { return bad; })) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (std::any_of(isBad + i, isBad + i + kSize, [](bool bad) { return bad; })) {
            medians[i] = MedianAbout(plane, x + i, y, kReach, plane);
        }
    }
}

} // namespace

float MedianOf(float* values, int count)
{
    if (count == 0) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    float* const above = values + count / 2;
    std::nth_element(values, above, values + count);
    if (count % 2 == 1) {
        return *above;
    }
    return static_cast<float>(0.5 * (static_cast<double>(*std::max_element(values, above)) + *above));
}

void MediansOf25(const PlaneView& plane, int y, int first, int end, float* medians)
{
    const bool isInside = y >= kReach && y + kReach < plane.height;
    for (int x = first; x < end;) {
        const int inner = std::min({isInside ? plane.width - kReach - x : 0, end - x, kMedianBlock});
        if (x < kReach || inner <= 0) {
            *medians++ = MedianAbout(plane, x++, y, kReach, plane);
        } else {
            InnerMedians(plane, x, y, inner, medians);
            MendMedians(plane, x, y, inner, medians);
            medians += inner;
            x += inner;
        }
    }
}

} // namespace corvane::filter
