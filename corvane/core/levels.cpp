// The display levels of the working image.

#include <algorithm>
#include <cmath>

#include "corvane/core/fold.h"
#include "corvane/core/stl_image.h"

using namespace corvane;

namespace {

void CutRow(float* row, int count, double min, double max)
{
    for (int x = 0; x < count; ++x) {
        const double v = row[x];
        const double notAbove = max >= v ? v : max;
        row[x] = static_cast<float>(v < min ? min : notAbove);
    }
}

} // namespace

void CStlImage::SetLevel(int plane, double min, double max)
{
    if (plane != -1) {
        CImage::SetLevel(plane, min, max);
        return;
    }
    const double first = GetLevelMin(0);
    const double last = GetLevelMax(0);
    const double range = GetLevelRange(0);
    CImage::SetLevel(0, min, max);
    for (int p = 1; IsColor() && p < 3; ++p) {
        const double a = (min - first) / range;
        const double b = (max - last) / range;
        CImage::SetLevel(p, GetLevelMin(p) + GetLevelRange(p) * a, GetLevelMax(p) + GetLevelRange(p) * b);
    }
}

void CStlImage::CalcMinMax()
{
    for (int plane = 0; plane < std::min(GetPlanes(), 3); ++plane) {
        const Extremes extremes = ExtremesOf(WorkingArea(*this, nullptr), [&](Extremes& part, int y) {
            part.Add(GetImageAdr(0, y, plane, 1), GetWidth());
        });
        const float first = GetPixelGrayRaw(0, 0, plane);
        const bool isFirst = std::isnan(first) || extremes.Empty(); // nothing compares with NaN
        minPixel_[plane] = isFirst ? first : static_cast<float>(extremes.Min());
        maxPixel_[plane] = isFirst ? first : static_cast<float>(extremes.Max());
    }
}

void CStlImage::SetOrgLevel()
{
    for (int i = 0; i < 3; ++i) {
        const int plane = i < GetPlanes() ? i : 0;
        savedLevelMin_[i] = GetLevelMin(plane);
        savedLevelMax_[i] = GetLevelMax(plane);
    }
}

void CStlImage::RestoreOrgLevel()
{
    for (int plane = 0; plane < std::min(GetPlanes(), 3); ++plane) {
        SetLevel(plane, savedLevelMin_[plane], savedLevelMax_[plane]);
    }
}

void CStlImage::CutOutOfLevel()
{
    WriteRows(*this, GetPlanes(),
              [&](float* row, int plane) { CutRow(row, GetWidth(), GetLevelMin(plane), GetLevelMax(plane)); });
}
