#include "corvane/filter/rank_rows.h"

#include <array>
#include <cstddef>
#include <utility>

#include "corvane/filter/ranked_block.h"
#include "corvane/filter/sorted_lists.h"

namespace corvane::filter {
namespace {

using InnerRow = void (*)(const Band& band, int begin, int end, float* out);

/// The value of a rank, which among the largest of columns alone is the last one.
template <std::size_t kRank, std::size_t kA, std::size_t kB>
[[gnu::always_inline]] inline float RankOfKept(const Sorted<kA>& a, const Sorted<kB>& b)
{
    return RankOfBoth<std::min(kRank, kA + kB - 1)>(a, b);
}

/// A rank for columns that have all their neighbours within the row. For the smallest and the largest the extreme of
/// each column is enough.
template <int kType, std::size_t kRank>
void InnerRankRow(const Band& band, int begin, int end, float* out)
{
    constexpr Kept kKept = kRank == 0 ? Kept::kSmallest : (kRank + 1 == Points(kType) ? Kept::kLargest : Kept::kAll);
    ForEachBlock(band, begin, end, out, [&](int first, int count) {
        const BlockColumns<kType, kKept> columns(band, first, count);
        float* __restrict const target = out + first;
        for (int i = 0; i < count; ++i) {
            const auto [a, b] = Lists<kType>(columns, i);
            target[i] = RankOfKept<kRank>(a, b);
        }
    });
}

/// The rows of all ranks of a small neighbourhood.
template <int kType, std::size_t... kRanks>
InnerRow InnerRowOf(std::size_t rank, std::index_sequence<kRanks...>)
{
    static constexpr std::array<InnerRow, sizeof...(kRanks)> kRows{InnerRankRow<kType, kRanks>...};
    return kRows[rank];
}

/// The 21 points, whose median and ends alone are worth code of their own.
void InnerRankRow5(const Band& band, int rank, int begin, int end, float* out)
{
    switch (rank) {
    case 0:
        return InnerRankRow<kSquare5, 0>(band, begin, end, out);
    case Points(kSquare5) / 2:
        return InnerRankRow<kSquare5, Points(kSquare5) / 2>(band, begin, end, out);
    case Points(kSquare5) - 1:
        return InnerRankRow<kSquare5, Points(kSquare5) - 1>(band, begin, end, out);
    default:
        ForEachBlock(band, begin, end, out,
                     [&](int first, int count) { RankedBlock<kSquare5>(band, first, count).Rank(rank, out + first); });
    }
}

void InnerRankRow(const Band& band, int type, int rank, int begin, int end, float* out)
{
    const auto place = static_cast<std::size_t>(rank);
    switch (type) {
    case kCross:
        return InnerRowOf<kCross>(place, std::make_index_sequence<Points(kCross)>())(band, begin, end, out);
    case kSquare3:
        return InnerRowOf<kSquare3>(place, std::make_index_sequence<Points(kSquare3)>())(band, begin, end, out);
    case kSquare5:
        return InnerRankRow5(band, rank, begin, end, out);
    default:
        std::copy(band.Row(0) + begin, band.Row(0) + end, out + begin);
    }
}

} // namespace

// By insertion: it comes to an end whatever the comparisons say, NaN included.
void Sort(Neighbours& points)
{
    auto* const values = points.values.data();
    for (int i = 1; i < points.count; ++i) {
        for (int j = i; j > 0 && values[j] < values[j - 1]; --j) {
            std::swap(values[j], values[j - 1]);
        }
    }
}

void RankRow(const Band& band, int type, int rank, int left, int right, float* out)
{
    rank = std::clamp(rank, 0, Points(type) - 1);
    const auto inner = [=, &band](int begin, int end) { InnerRankRow(band, type, rank, begin, end, out); };
    SplitColumns(left, right, band.Width(), Radius(type), inner, [=, &band](int x) {
        Neighbours points = band.At(x, type);
        Sort(points);
        out[x] = points.values[static_cast<std::size_t>(rank)];
    });
}

} // namespace corvane::filter
