// Medians and other ranks.

#include <algorithm>
#include <cstddef>

#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/rank_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

void CImgFilter::MedianFilter(int type, CStlImage* source, CRect* rect, int showProgress)
{
    MedianFilter(type, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::MedianFilter(int type, const CStlImage& source, const CRect* rect, const Run& run)
{
    FilterRows(*this, source, rect, run, IDS_MEDIAN, GetMedianR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) { MedianRow(band, type, left, right, out); };
    });
}

void CImgFilter::MinMaxFilter(int type, int rank, CStlImage* source, CRect* rect, int showProgress)
{
    MinMaxFilter(type, rank, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::MinMaxFilter(int type, int rank, const CStlImage& source, const CRect* rect, const Run& run)
{
    FilterRows(*this, source, rect, run, IDS_MINIMUM_MAXIMUM, GetMinMaxR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) { RankRow(band, type, rank, left, right, out); };
    });
}

float CImgFilter::GetMinMaxRaw(const float* const* rows, int x, int type, int rank) const
{
    Neighbours points(rows, x, GetWidth(), type);
    Sort(points);
    return points.values[static_cast<std::size_t>(std::clamp(rank, 0, points.count - 1))];
}

float CImgFilter::GetMedianRaw(const float* const* rows, int x, int type) const
{
    return GetMinMaxRaw(rows, x, type, Points(type) / 2);
}

float CImgFilter::GetMedianRaw(int x, int y, int type, int plane) const
{
    const float* rows[2 * kMostPointRadius + 1];
    SetFilterAdr(x, y, plane, GetMedianR(type), rows, 0);
    return GetMedianRaw(rows, x, type);
}

float CImgFilter::GetMedianGray(const float* const* rows, int x, int type, int plane) const
{
    const float raw = GetMedianRaw(rows, x, type);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetMedian256f(const float* const* rows, int x, int type, int plane) const
{
    return To256(GetMedianRaw(rows, x, type), plane);
}
