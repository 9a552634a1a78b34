// Weighted means: the mean filter and the one that spares edges.

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/laplacian.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// The part of its weight that a neighbour keeps beside an edge.
double EdgeFactor(double edge)
{
    return (1.0 - edge) * (1.0 - edge);
}

} // namespace

void CImgFilter::MeanFilter(int type, double weight, CStlImage* source, CRect* rect, int showProgress)
{
    MeanFilter(type, weight, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::MeanFilter(int type, double weight, const CStlImage& source, const CRect* rect, const Run& run)
{
    const double perWeight = 1.0 / ((Points(type) - 1) * weight + 1.0);
    FilterRows(*this, source, rect, run, IDS_MEAN, GetMeanR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) {
            MapSums(band, type, left, right, out, [=](double c, double s) { return (s * weight + c) * perWeight; });
        };
    });
}

void CImgFilter::MeanWithoutEdgeFilter(int type, double weight, CStlImage* source, CRect* rect, int showProgress)
{
    MeanWithoutEdgeFilter(type, weight, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::MeanWithoutEdgeFilter(int type, double weight, const CStlImage& source, const CRect* rect,
                                       const Run& run)
{
    const WeightedMean mean(type);
    const EdgeStrength edge{DisplayScale(source, 0)}; // plane 0's levels serve every plane
    FilterRows(*this, source, rect, run, IDS_MEAN, GetMeanR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) {
            MapSums(band, type, left, right, out, [=](double c, double s, double laplacian) {
                return mean(c, s, EdgeFactor(edge(laplacian)) * weight);
            });
        };
    });
}

float CImgFilter::GetMeanRaw(const float* const* rows, int x, int type, double weight, double* plainMean) const
{
    const Neighbours points(rows, x, GetWidth(), type);
    const double centre = points.Centre();
    if (points.count == 1) {
        return points.Centre();
    }
    const double sum = SumOfOthers(points);
    if (plainMean != nullptr) {
        *plainMean = PlainMean(centre, sum, type);
    }
    return static_cast<float>(WeightedMean(type)(centre, sum, weight));
}

float CImgFilter::GetMeanRaw(int x, int y, int type, double weight, int plane) const
{
    const float* rows[2 * kMostPointRadius + 1];
    SetFilterAdr(x, y, plane, GetMeanR(type), rows, 0);
    return GetMeanRaw(rows, x, type, weight, nullptr);
}

float CImgFilter::GetMeanGray(const float* const* rows, int x, int type, double weight, int plane) const
{
    const float raw = GetMeanRaw(rows, x, type, weight, nullptr);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetMean256f(const float* const* rows, int x, int type, double weight, int plane) const
{
    return To256(GetMeanRaw(rows, x, type, weight, nullptr), plane);
}

float CImgFilter::GetMeanWithoutEdgeRaw(const float* const* rows, int x, int type, double weight, int plane) const
{
    const Neighbours points(rows, x, GetWidth(), type);
    if (points.count == 1) {
        return points.Centre();
    }
    const Neighbours cross(rows + Radius(type) - 1, x, GetWidth(), kCross);
    const double edge = EdgeStrength{DisplayScale(*this, plane)}(CrossLaplacian(cross));
    return static_cast<float>(WeightedMean(type)(points.Centre(), SumOfOthers(points), EdgeFactor(edge) * weight));
}

float CImgFilter::GetMeanWithoutEdgeGray(const float* const* rows, int x, int type, double weight, int plane) const
{
    const float raw = GetMeanWithoutEdgeRaw(rows, x, type, weight, plane);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetMeanWithoutEdge256f(const float* const* rows, int x, int type, double weight, int plane) const
{
    return To256(GetMeanWithoutEdgeRaw(rows, x, type, weight, plane), plane);
}
