// The Laplacian as an image of edges.

#include "corvane/filter/laplacian.h"

#include <algorithm>
#include <cmath>

#include "corvane/filter/filter.h"
#include "corvane/filter/filter_rows.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// The Laplacian of type 2: the second difference, along columns and then along the row. It is the same as
/// 4 c - 2 * direct + diagonal neighbours.
constexpr int kTwoDifferences = 2;

double SecondDifference(double before, double centre, double after)
{
    return (before + after) - (centre + centre);
}

/// The signed Laplacian of types 0 and 1 from the centre and the sum of its neighbours.
double FromSums(double c, double s, double others)
{
    return others * c - s;
}

double TwoDifferences(const Neighbours& square)
{
    const auto& v = square.values; // three rows of three
    return SecondDifference(SecondDifference(v[0], v[3], v[6]), SecondDifference(v[1], v[4], v[7]),
                            SecondDifference(v[2], v[5], v[8]));
}

/// The signed Laplacian at column x of three rows, or what stands for it when there is no such type.
double Laplacian(const float* const* rows, int x, int width, int type)
{
    if (type == kCross || type == kSquare3) {
        const Neighbours points(rows, x, width, type);
        return FromSums(points.Centre(), SumOfOthers(points), points.count - 1);
    }
    return type == kTwoDifferences ? TwoDifferences(Neighbours(rows, x, width, kSquare3)) : rows[0][0];
}

/// For columns that have both neighbours: the differences of columns first, a block at a time.
void InnerTwoDifferences(const Band& band, int begin, int end, double min, float* __restrict out)
{
    double column[kBlockColumns + 2];
    for (; begin < end; begin += kBlockColumns) {
        const int count = std::min(kBlockColumns, end - begin);
        const float* const up = band.Row(-1) + begin - 1;
        const float* const middle = band.Row(0) + begin - 1;
        const float* const down = band.Row(1) + begin - 1;
        for (int i = 0; i < count + 2; ++i) {
            column[i] = SecondDifference(up[i], middle[i], down[i]);
        }
        for (int i = 0; i < count; ++i) {
            const double laplacian = SecondDifference(column[i], column[i + 1], column[i + 2]);
            out[begin + i] = static_cast<float>(std::fabs(laplacian) + min);
        }
    }
}

void TwoDifferencesRow(const Band& band, int left, int right, double min, float* out)
{
    const auto inner = [&](int begin, int end) { InnerTwoDifferences(band, begin, end, min, out); };
    SplitColumns(left, right, band.Width(), 1, inner,
                 [&](int x) { out[x] = static_cast<float>(std::fabs(TwoDifferences(band.At(x, kSquare3))) + min); });
}

void RowAbove(const Band& band, int left, int right, double min, float* __restrict out)
{
    const float* const up = band.Row(-1);
    for (int x = left; x < right; ++x) {
        out[x] = static_cast<float>(std::fabs(static_cast<double>(up[x])) + min);
    }
}

} // namespace

void CImgFilter::LaplacianFilter(int type, CStlImage* source, CRect* rect, int showProgress)
{
    LaplacianFilter(type, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::LaplacianFilter(int type, const CStlImage& source, const CRect* rect, const Run& run)
{
    const double min = source.GetLevelMin(0); // plane 0's serves every plane
    const double others = Points(type) - 1;
    FilterRows(*this, source, rect, run, IDS_EDGE_DEFINE, 1, [=](int) {
        return [=](const Band& band, int left, int right, float* out) {
            switch (type) {
            case kCross:
            case kSquare3:
                return MapSums(band, type, left, right, out,
                               [=](double c, double s) { return std::fabs(FromSums(c, s, others)) + min; });
            case kTwoDifferences:
                return TwoDifferencesRow(band, left, right, min, out);
            default:
                return RowAbove(band, left, right, min, out);
            }
        };
    });
}

float CImgFilter::GetLaplacianRaw(const float* const* rows, int x, int type, int plane) const
{
    return static_cast<float>(std::fabs(Laplacian(rows, x, GetWidth(), type)) + GetLevelMin(plane));
}

float CImgFilter::GetLaplacianGray(const float* const* rows, int x, int type, int plane) const
{
    const float raw = GetLaplacianRaw(rows, x, type, plane);
    return GetPixelGray(&raw, plane);
}

float CImgFilter::GetLaplacian256f(const float* const* rows, int x, int type, int plane) const
{
    return To256(GetLaplacianRaw(rows, x, type, plane), plane);
}
