#pragma once

#include <algorithm>

#include "corvane/filter/filter_rows.h"
#include "corvane/filter/neighbourhood.h"
#include "corvane/filter/sorted_lists.h"

namespace corvane::filter {

/// A block of columns with their neighbourhoods in order, for ranks that are known only when it runs.
template <int kType>
class RankedBlock {
public:
    RankedBlock(const Band& band, int begin, int count) : count_(count)
    {
        const BlockColumns<kType> columns(band, begin, count);
        for (int i = 0; i < count; ++i) {
            const auto [first, second] = Lists<kType>(columns, i);
            StoreColumn(first, first_, i);
            StoreColumn(second, second_, i);
        }
    }

    /// Writes the value of rank `rank` about each column of the block to out: `RankOfBoth`, a row at a time.
    void Rank(int rank, float* __restrict out) const
    {
        const int least = std::max(rank + 1 - kSecond, 0); // values that come from the first list
        const int most = std::min(kFirst, rank + 1);
        for (int fromFirst = least; fromFirst <= most; ++fromFirst) {
            const float* const a = fromFirst > 0 ? first_[fromFirst - 1] : second_[rank];
            const float* const b = fromFirst <= rank ? second_[rank - fromFirst] : first_[rank];
            for (int i = 0; i < count_; ++i) {
                const float largest = std::max(a[i], b[i]);
                out[i] = fromFirst == least ? largest : std::min(out[i], largest);
            }
        }
    }

private:
    static constexpr int kFirst = kType == kCross ? 2 : (kType == kSquare3 ? 6 : 10);
    static constexpr int kSecond = Points(kType) - kFirst;

    int count_;
    float first_[kFirst][kBlockColumns];
    float second_[kSecond][kBlockColumns];
};

} // namespace corvane::filter
