#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "corvane/filter/filter_rows.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// Values in ascending order. Always of a size known to the compiler, so that they become registers and a loop over
/// samples becomes vector instructions.
template <std::size_t kCount>
using Sorted = std::array<float, kCount>;

/// Every other value of a list, beginning with the first (0) or the second (1).
template <std::size_t kFirst, std::size_t kCount>
[[gnu::always_inline]] inline auto EveryOther(const Sorted<kCount>& list)
{
    return [&]<std::size_t... kI>(std::index_sequence<kI...>) {
        return Sorted<sizeof...(kI)>{list[2 * kI + kFirst]...};
    }(std::make_index_sequence<(kCount + 1 - kFirst) / 2>());
}

/// The value at place kPlace of two lists that were merged from every other value: the even places of both and the odd
/// places of both. All but the first meet a neighbour of the other list.
template <std::size_t kPlace, std::size_t kEven, std::size_t kOdd>
[[gnu::always_inline]] inline float Woven(const Sorted<kEven>& even, const Sorted<kOdd>& odd)
{
    constexpr std::size_t kPair = (kPlace + 1) / 2;
    if constexpr (kPlace == 0) {
        return even[0];
    } else if constexpr (kPair > kOdd) {
        return even[kPair];
    } else if constexpr (kPair >= kEven) {
        return odd[kPair - 1];
    } else {
        return kPlace % 2 == 1 ? std::min(odd[kPair - 1], even[kPair]) : std::max(odd[kPair - 1], even[kPair]);
    }
}

/// Merges two lists by minima and maxima alone.
/// K. E. Batcher, Sorting networks and their applications, AFIPS 1968; for lists of any two lengths in
/// D. E. Knuth, The Art of Computer Programming 3, 1973, section 5.3.4.
template <std::size_t kA, std::size_t kB>
[[gnu::always_inline]] inline Sorted<kA + kB> Merge(const Sorted<kA>& a, const Sorted<kB>& b)
{
    if constexpr (kA == 0) {
        return b;
    } else if constexpr (kB == 0) {
        return a;
    } else if constexpr (kA == 1 && kB == 1) {
        return {std::min(a[0], b[0]), std::max(a[0], b[0])};
    } else {
        const auto even = Merge(EveryOther<0>(a), EveryOther<0>(b));
        const auto odd = Merge(EveryOther<1>(a), EveryOther<1>(b));
        return [&]<std::size_t... kI>(std::index_sequence<kI...>) {
            return Sorted<kA + kB>{Woven<kI>(even, odd)...};
        }(std::make_index_sequence<kA + kB>());
    }
}

/// The value of rank kRank in what two lists hold together, without merging them: of every way to take kRank + 1 values
/// from their beginnings the largest one, and of these the smallest.
template <std::size_t kRank, std::size_t kA, std::size_t kB>
[[gnu::always_inline]] inline float RankOfBoth(const Sorted<kA>& a, const Sorted<kB>& b)
{
    constexpr std::size_t kLeast = kRank + 1 > kB ? kRank + 1 - kB : 0; // values that come from a
    constexpr std::size_t kMost = std::min(kA, kRank + 1);
    const auto largest = [&]<std::size_t kFromA>(std::integral_constant<std::size_t, kFromA>) {
        constexpr std::size_t kFromB = kRank + 1 - kFromA;
        if constexpr (kFromA == 0) {
            return b[kFromB - 1];
        } else if constexpr (kFromB == 0) {
            return a[kFromA - 1];
        } else {
            return std::max(a[kFromA - 1], b[kFromB - 1]);
        }
    };
    return [&]<std::size_t... kI>(std::index_sequence<kI...>) {
        float rank = largest(std::integral_constant<std::size_t, kLeast>());
        ((rank = std::min(rank, largest(std::integral_constant<std::size_t, kLeast + 1 + kI>()))), ...);
        return rank;
    }(std::make_index_sequence<kMost - kLeast>());
}

/// Writes a list into column i of its rows.
template <std::size_t kCount, int kColumns>
[[gnu::always_inline]] inline void StoreColumn(const Sorted<kCount>& list, float (&rows)[kCount][kColumns], int i)
{
    [&]<std::size_t... kI>(std::index_sequence<kI...>) {
        ((rows[kI][i] = list[kI]), ...);
    }(std::make_index_sequence<kCount>());
}

/// Column i of the rows of lists.
template <std::size_t kCount, int kColumns>
[[gnu::always_inline]] inline Sorted<kCount> LoadColumn(const float (&rows)[kCount][kColumns], int i)
{
    return [&]<std::size_t... kI>(std::index_sequence<kI...>) {
        return Sorted<kCount>{rows[kI][i]...};
    }(std::make_index_sequence<kCount>());
}

/// The columns of a band as sorted lists: short ones of the three middle rows, tall ones of all five. Each is sorted
/// whenever it is asked for.
class RowColumns {
public:
    RowColumns(const Band& band, int begin)
        : up_(band.Row(-1) + begin), middle_(band.Row(0) + begin), down_(band.Row(1) + begin),
          above_(band.Row(-band.Radius()) + begin), below_(band.Row(band.Radius()) + begin)
    {}

    float Middle(int i) const { return middle_[i]; }
    Sorted<3> Short(int i) const { return Merge(Merge(Sorted<1>{up_[i]}, Sorted<1>{middle_[i]}), Sorted<1>{down_[i]}); }
    /// Takes the short one in.
    Sorted<5> Tall(int i, const Sorted<3>& within) const
    {
        return Merge(within, Merge(Sorted<1>{above_[i]}, Sorted<1>{below_[i]}));
    }

private:
    const float* up_;
    const float* middle_;
    const float* down_;
    const float* above_;
    const float* below_;
};

/// What is kept of a list.
enum class Kept { kAll, kSmallest, kLargest };

template <Kept kKept, std::size_t kCount>
[[gnu::always_inline]] inline auto Keep(const Sorted<kCount>& list)
{
    if constexpr (kKept == Kept::kAll) {
        return list;
    } else {
        return Sorted<1>{kKept == Kept::kSmallest ? list.front() : list.back()};
    }
}

/// The same, or what is kept of it, for a block of columns: each sorted once for all neighbourhoods that it is a part
/// of.
template <int kType, Kept kKept = Kept::kAll>
class BlockColumns {
public:
    BlockColumns(const Band& band, int begin, int count) : rows_(band, begin)
    {
        const RowColumns rows(band, begin - kMargin);
        for (int i = 0; i < count + 2 * kMargin; ++i) {
            const Sorted<3> column = rows.Short(i);
            StoreColumn(Keep<kKept>(column), short_, i);
            if constexpr (kType == kSquare5) {
                StoreColumn(Keep<kKept>(rows.Tall(i, column)), tall_, i);
            }
        }
    }

    float Middle(int i) const { return rows_.Middle(i); }
    auto Short(int i) const { return LoadColumn(short_, i + kMargin); }
    auto Tall(int i) const { return LoadColumn(tall_, i + kMargin); }

private:
    static constexpr int kMargin = filter::Radius(kType);
    static constexpr int kColumns = kBlockColumns + 2 * kMargin;

    RowColumns rows_;
    float short_[kKept == Kept::kAll ? 3 : 1][kColumns];
    float tall_[kKept == Kept::kAll ? 5 : 1][kColumns]; ///< of the larger square alone
};

/// The neighbourhood of column i as two sorted lists.
template <int kType, class Columns>
[[gnu::always_inline]] inline auto Lists(const Columns& columns, int i)
{
    if constexpr (kType == kCross) {
        return std::pair(Merge(Sorted<1>{columns.Middle(i - 1)}, Sorted<1>{columns.Middle(i + 1)}), columns.Short(i));
    } else if constexpr (kType == kSquare3) {
        return std::pair(Merge(columns.Short(i - 1), columns.Short(i + 1)), columns.Short(i));
    } else {
        return std::pair(Merge(columns.Tall(i - 1), columns.Tall(i + 1)),
                         Merge(Merge(columns.Short(i - 2), columns.Short(i + 2)), columns.Tall(i)));
    }
}

} // namespace corvane::filter
