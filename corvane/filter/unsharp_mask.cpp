// Unsharp masking.

#include <cmath>

#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

void CImgFilter::UnSharpMask(double amount, int type, double weight, double threshold, CStlImage* source, CRect* rect,
                             int showProgress)
{
    UnSharpMask(amount, type, weight, threshold, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::UnSharpMask(double amount, int type, double weight, double threshold, const CStlImage& source,
                             const CRect* rect, const Run& run)
{
    const WeightedMean weightedMean(type);
    const auto sharpen = [=](double c, double s) {
        const double mean = static_cast<float>(weightedMean(c, s, weight)); // as its kernel gives it
        const bool stands = std::fabs(PlainMean(c, s, type) / c - 1.0) >= threshold;
        return stands ? (c - mean) * amount + c : c;
    };
    FilterRows(*this, source, rect, run, IDS_UNSHARP_MASK, GetMeanR(type), [=](int) {
        return
            [=](const Band& band, int left, int right, float* out) { MapSums(band, type, left, right, out, sharpen); };
    });
}
