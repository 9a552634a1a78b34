// Sharpening by the neighbours' mean: everywhere alike, and the more the stronger the edge.

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/laplacian.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// The sharpened sample, from a centre c and the sum s of its neighbours.
class Sharp {
public:
    explicit Sharp(int type) : others_(Points(type) - 1) {}

    double operator()(double c, double s, double strength) const { return Sum(c, s, strength) / Divisor(strength); }
    /// Dividend and divisor of the above.
    double Sum(double c, double s, double strength) const { return 2.0 * others_ * c - strength * s; }
    double Divisor(double strength) const { return 2.0 * others_ - strength * others_; }

private:
    double others_;
};

/// The strength that is left beside an edge of that strength.
double AtEdge(double strength, double edge)
{
    return strength * (edge * edge);
}

} // namespace

void CImgFilter::SharpFilter(int type, double strength, CStlImage* source, CRect* rect, int showProgress)
{
    SharpFilter(type, strength, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::SharpFilter(int type, double strength, const CStlImage& source, const CRect* rect, const Run& run)
{
    const Sharp sharp(type);
    const double perWeight = 1.0 / sharp.Divisor(strength);
    FilterRows(*this, source, rect, run, IDS_SHARPEN, GetSharpR(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) {
            MapSums(band, type, left, right, out,
                    [=](double c, double s) { return sharp.Sum(c, s, strength) * perWeight; });
        };
    });
}

void CImgFilter::SharpEdgeFilter(int type, double strength, CStlImage* source, CRect* rect, int showProgress)
{
    SharpEdgeFilter(type, strength, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::SharpEdgeFilter(int type, double strength, const CStlImage& source, const CRect* rect, const Run& run)
{
    const Sharp sharp(type);
    FilterRows(*this, source, rect, run, IDS_EDGE_ENHANCE, GetSharpR(type), [=](int plane) {
        const EdgeStrength edge{DisplayScale(source, PlaneOf(source, plane))};
        return [=](const Band& band, int left, int right, float* out) {
            MapSums(band, type, left, right, out, [=](double c, double s, double laplacian) {
                return sharp(c, s, AtEdge(strength, edge(laplacian)));
            });
        };
    });
}

float CImgFilter::GetSharpRaw(const float* const* rows, int x, int type, double strength) const
{
    const Neighbours points(rows, x, GetWidth(), type);
    if (points.count == 1) {
        return points.Centre();
    }
    return static_cast<float>(Sharp(type)(points.Centre(), SumOfOthers(points), strength));
}

float CImgFilter::GetSharpGray(const float* const* rows, int x, int type, double strength, int plane) const
{
    const float raw = GetSharpRaw(rows, x, type, strength);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetSharp256f(const float* const* rows, int x, int type, double strength, int plane) const
{
    return To256(GetSharpRaw(rows, x, type, strength), plane);
}

float CImgFilter::GetSharpEdgeRaw(const float* const* rows, int x, int type, double strength, int plane) const
{
    const Neighbours points(rows, x, GetWidth(), type);
    if (points.count == 1) {
        return points.Centre();
    }
    const Neighbours cross(rows + Radius(type) - 1, x, GetWidth(), kCross);
    const double edge = EdgeStrength{DisplayScale(*this, plane)}(CrossLaplacian(cross));
    return static_cast<float>(Sharp(type)(points.Centre(), SumOfOthers(points), AtEdge(strength, edge)));
}

float CImgFilter::GetSharpEdgeGray(const float* const* rows, int x, int type, double strength, int plane) const
{
    const float raw = GetSharpEdgeRaw(rows, x, type, strength, plane);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetSharpEdge256f(const float* const* rows, int x, int type, double strength, int plane) const
{
    return To256(GetSharpEdgeRaw(rows, x, type, strength, plane), plane);
}
