#include "corvane/tone/tone_curve.h"

#include <algorithm>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"
#include "corvane/tone/curve.h"
#include "corvane/tone/curve_row.h"

using namespace corvane;

namespace {

/// The curves of one plane, in the order in which a sample goes through them.
std::vector<Curve> CurvesOf(const CImage& image, int plane, const float* const* curves, int n)
{
    const Curve master(curves[0], n);
    return image.IsColor() ? std::vector{Curve(curves[1 + std::min(plane, 2)], n), master} : std::vector{master};
}

} // namespace

void CImgToneCurve::Do(const float* const* curves, int n, CStlImage* source, CRect* rect, int showProgress)
{
    Do(curves, n, *source, rect, WindowRun(*this, showProgress));
}

void CImgToneCurve::Do(const float* const* curves, int n, const CStlImage& source, const CRect* rect, const Run& run)
{
    const int needed = IsColor() ? 4 : 1;
    if (curves == nullptr || n < 2 || std::count(curves, curves + needed, nullptr) > 0) {
        return;
    }
    Stage stage(run, IDS_CURVES, GetHeight() * GetPlanes());
    WalkArea(*this, source, WorkingArea(*this, rect), stage,
             [&](int plane) { return CurveRow(DisplayScale(*this, plane), CurvesOf(*this, plane, curves, n)); });
}

double CImgToneCurve::CalcToneCurve(const float* curve, int n, double x) const
{
    if (curve != nullptr && n > 1) {
        Curve(curve, n).Apply(&x, 1);
    }
    return x;
}
