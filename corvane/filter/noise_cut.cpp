// Removal of hot and cool pixels.

#include <cmath>

#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/rank_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

void CImgFilter::NoiseCut(int type, double threshold, int fixCool, int fixHot, CStlImage* source, CRect* rect,
                          int showProgress)
{
    NoiseCut(type, threshold, fixCool, fixHot, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::NoiseCut(int type, double threshold, int fixCool, int fixHot, const CStlImage& source,
                          const CRect* rect, const Run& run)
{
    const bool cool = fixCool != 0;
    const bool hot = fixHot != 0;
    FilterRows(*this, source, rect, run, IDS_HOT_COOL, GetMedianR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* __restrict out) {
            MedianRow(band, type, left, right, out);
            const float* const centre = band.Row(0);
            for (int x = left; x < right; ++x) {
                const double c = centre[x];
                const double median = out[x];
                const bool stands = std::fabs(median / c - 1.0) > threshold;
                const bool isWrong = (cool & (c < median)) | (hot & (c > median));
                out[x] = (stands & isWrong) ? out[x] : centre[x];
            }
        };
    });
}
