// The display levels of the working image.

#include <algorithm>

#include "corvane/core/stl_image.h"

namespace {

void MinMaxRow(const float* row, int count, float& min, float& max)
{
    // Lanes begin with the running extremes, so a NaN there stays until the plain comparison would replace it: never.
    constexpr int kLanes = 32;
    float low[kLanes];
    float high[kLanes];
    std::fill_n(low, kLanes, min);
    std::fill_n(high, kLanes, max);
    int x = 0;
    for (; x + kLanes <= count; x += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane) {
            const float v = row[x + lane];
            low[lane] = v < low[lane] ? v : low[lane];
            high[lane] = v > high[lane] ? v : high[lane];
        }
    }
    for (; x < count; ++x) {
        low[0] = row[x] < low[0] ? row[x] : low[0];
        high[0] = row[x] > high[0] ? row[x] : high[0];
    }
    for (int lane = 0; lane < kLanes; ++lane) {
        min = low[lane] < min ? low[lane] : min;
        max = high[lane] > max ? high[lane] : max;
    }
}

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
        float min = GetPixelGrayRaw(0, 0, plane);
        float max = min;
        for (int y = 0; y < GetHeight(); ++y) {
            MinMaxRow(GetImageAdr(0, y, plane, 1), GetWidth(), min, max);
        }
        minPixel_[plane] = min;
        maxPixel_[plane] = max;
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
    for (int plane = 0; plane < GetPlanes(); ++plane) {
        for (int y = 0; y < GetHeight(); ++y) {
            CutRow(GetImageAdr(0, y, plane), GetWidth(), GetLevelMin(plane), GetLevelMax(plane));
        }
    }
}
