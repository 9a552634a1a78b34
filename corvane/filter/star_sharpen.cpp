// Star sharpening.

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "corvane/core/interpolation.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/rank_rows.h"
#include "corvane/filter/ranked_block.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// Which ranks are asked for, and when their value takes the place of a sample.
class StarRule {
public:
    StarRule(int type, double rankPosition, double threshold, int keepPeaks)
        : last_(Points(type) - 1), threshold_(threshold), keepsPeaks_(keepPeaks != 0)
    {
        const double place = rankPosition > 0.0 ? std::min<double>(rankPosition, last_) : 0.0;
        below_ = static_cast<int>(place);
        fraction_ = place - below_;
    }

    int Below() const { return below_; }
    int Above() const { return std::min(below_ + 1, last_); }
    int Last() const { return last_; }

    double operator()(double centre, double below, double above, double max) const
    {
        const double between = Ramp(below, above, fraction_);
        const double value = below_ == last_ ? below : between; // an infinite maximum has no difference from itself
        const bool differs = (threshold_ == 0.0) | (std::fabs(value / max - 1.0) >= threshold_);
        const bool isPeak = keepsPeaks_ & (max == centre);
        return (differs & !isPeak) ? value : centre;
    }

private:
    int last_;
    int below_;
    double fraction_;
    double threshold_;
    bool keepsPeaks_;
};

float Sharpened(const StarRule& rule, Neighbours points)
{
    const float centre = points.Centre();
    Sort(points);
    const auto at = [&](int rank) { return points.values[static_cast<std::size_t>(rank)]; };
    return static_cast<float>(rule(centre, at(rule.Below()), at(rule.Above()), at(rule.Last())));
}

template <int kType>
void InnerStarRow(const Band& band, const StarRule& rule, int begin, int end, float* out)
{
    ForEachBlock(band, begin, end, out, [&](int first, int count) {
        const RankedBlock<kType> block(band, first, count);
        float below[kBlockColumns];
        float above[kBlockColumns];
        float max[kBlockColumns];
        block.Rank(rule.Below(), below);
        block.Rank(rule.Above(), above);
        block.Rank(rule.Last(), max);
        const float* const centre = band.Row(0) + first;
        float* __restrict const target = out + first;
        for (int i = 0; i < count; ++i) {
            target[i] = static_cast<float>(rule(centre[i], below[i], above[i], max[i]));
        }
    });
}

void StarRow(const Band& band, int type, const StarRule& rule, int left, int right, float* out)
{
    const auto inner = [&](int begin, int end) {
        switch (type) {
        case kCross:
            return InnerStarRow<kCross>(band, rule, begin, end, out);
        case kSquare3:
            return InnerStarRow<kSquare3>(band, rule, begin, end, out);
        case kSquare5:
            return InnerStarRow<kSquare5>(band, rule, begin, end, out);
        default:
            std::copy(band.Row(0) + begin, band.Row(0) + end, out + begin);
        }
    };
    SplitColumns(left, right, band.Width(), Radius(type), inner,
                 [&](int x) { out[x] = Sharpened(rule, band.At(x, type)); });
}

} // namespace

void CImgFilter::StarSharpFilter(int type, double rankPosition, double threshold, int keepPeaks, CStlImage* source,
                                 CRect* rect, int showProgress)
{
    StarSharpFilter(type, rankPosition, threshold, keepPeaks, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::StarSharpFilter(int type, double rankPosition, double threshold, int keepPeaks,
                                 const CStlImage& source, const CRect* rect, const Run& run)
{
    const StarRule rule(type, rankPosition, threshold, keepPeaks);
    FilterRows(*this, source, rect, run, IDS_STAR_SHARPEN, GetStarSharpR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) { StarRow(band, type, rule, left, right, out); };
    });
}

float CImgFilter::GetStarSharpRaw(const float* const* rows, int x, int type, double rankPosition, double threshold,
                                  int keepPeaks) const
{
    const Neighbours points(rows, x, GetWidth(), type);
    return points.count == 1 ? points.Centre() : Sharpened(StarRule(type, rankPosition, threshold, keepPeaks), points);
}
