// Brightness centroids, reference points, and the alignment that follows from them.

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "corvane/core/blank.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/truncate.h"
#include "corvane/core/turn.h"
#include "corvane/core/walk.h"

using namespace corvane;

namespace {

/// Radians to degrees as alignment has always converted them.
constexpr double kDegrees = 57.29577950560105;

bool IsSet(const CfPoint& p)
{
    return p.ix != -1 && p.iy != -1;
}

/// The pixels of one row that a centroid sees, on the 256f scale.
class CentroidRow {
public:
    explicit CentroidRow(const CStlImage& image)
        : image_(image), planes_(image.IsColor() && image.GetPlanes() >= 3 ? 3 : 1), isBlank_(image)
    {}

    void MoveTo(int x, int y)
    {
        for (int p = 0; p < planes_; ++p) {
            rows_[p] = image_.GetImageAdr(x, y, p, 1);
        }
    }

    bool IsBlank(int x) const
    {
        bool blank = true;
        for (int p = 0; p < planes_; ++p) {
            blank = blank && isBlank_(rows_[p][x]);
        }
        return blank;
    }

    /// The value for the mean: each plane counts from its level min up. NaN stays only where there is one plane.
    double Positive(int x) const
    {
        const double first = Value(0, x);
        if (planes_ == 1) {
            return first < 0.0 ? 0.0 : first;
        }
        return Mix([&](int p) {
            const double d = Value(p, x);
            return d > 0.0 ? d : 0.0;
        });
    }

    /// The value for the weights: a monochrome image counts from its level min up, colours as they are.
    double Weighed(int x) const
    {
        return planes_ == 1 ? Positive(x) : Mix([&](int p) { return Value(p, x); });
    }

private:
    double Value(int p, int x) const { return image_.To256(static_cast<double>(rows_[p][x]), p); }

    template <class ValueOf>
    static double Mix(ValueOf value)
    {
        return BrightnessOf(value(0), value(1), value(2));
    }

    const CStlImage& image_;
    int planes_;
    BlankTest isBlank_;
    const float* rows_[3] = {};
};

/// Calls visit(x, value) for the pixels that count. A blank pixel ends its row: what lies behind is left out too.
template <class IsInside, class ValueOf, class Visit>
void ForEachPixel(const CStlImage& image, const CRect& area, IsInside isInside, ValueOf valueOf, Visit visit)
{
    CentroidRow row(image);
    for (int y = static_cast<int>(area.top); y < area.bottom && area.left < area.right; ++y) {
        row.MoveTo(area.left, y);
        for (int x = static_cast<int>(area.left); x < area.right; ++x) {
            if (!isInside(x, y)) {
                continue;
            }
            const int column = x - static_cast<int>(area.left);
            if (row.IsBlank(column)) {
                break;
            }
            visit(x, y, valueOf(row, column));
        }
    }
}

/// Half way between two edges, whose sum an int may not hold.
double Middle(LONG first, LONG second)
{
    const std::int64_t middle = (std::int64_t{first} + second) / 2;
    return static_cast<double>(middle);
}

template <class IsInside>
void Centroid(const CStlImage& image, const CRect& kept, double& cx, double& cy, IsInside isInside)
{
    const CRect area = WorkingArea(image, &kept);
    double total = 0.0;
    long long count = 0;
    ForEachPixel(
        image, area, isInside, [](const CentroidRow& row, int x) { return row.Positive(x); },
        [&](int, int, double d) {
            total += d;
            ++count;
        });
    const double mean = total / static_cast<double>(count);
    double weightedX = 0.0;
    double weightedY = 0.0;
    double weight = 0.0;
    ForEachPixel(
        image, area, isInside, [](const CentroidRow& row, int x) { return row.Weighed(x); },
        [&](int x, int y, double d) {
            const double excess = d - mean;
            const double w = excess <= 0.0 ? 0.0 : excess * excess;
            weightedX += x * w;
            weightedY += y * w;
            weight += w;
        });
    cx = weightedX / weight;
    cy = weightedY / weight;
    const POINT rounded{Truncate(cx + 0.5), Truncate(cy + 0.5)};
    if (PtInRect(&kept, rounded) == 0) {
        cx = Middle(kept.left, kept.right);
        cy = Middle(kept.top, kept.bottom);
    }
}

CRect WholeOr(const CImage& image, const CRect* rect)
{
    return rect == nullptr ? CRect(0, 0, image.GetWidth(), image.GetHeight()) : *rect;
}

} // namespace

void CStlImage::InitStdPt()
{
    stdPt_[0].Set(-1, -1);
    stdPt_[1].Set(-1, -1);
    stdCtr_.Set(-1, -1);
}

void CStlImage::SetStdPt(int i, CfPoint p)
{
    if (i != 0 && i != 1) {
        return;
    }
    stdPt_[i] = p;
    if (i == 0) {
        stdCtr_ = p;
    }
}

CfPoint CStlImage::GetStdPt(int i) const
{
    return i == 0 || i == 1 ? stdPt_[i] : CfPoint(-1, -1);
}

int CStlImage::IsValidStdPt(int i) const
{
    return IsSet(GetStdPt(i)) ? 1 : 0;
}

int CStlImage::GetStdPtNum() const
{
    return IsValidStdPt(0) + IsValidStdPt(1);
}

int CStlImage::IsValidStdCtr() const
{
    return IsSet(stdCtr_) ? 1 : 0;
}

void CStlImage::SetDefaultCenter()
{
    stdCtr_.Set(GetWidth() / 2, GetHeight() / 2);
}

void CStlImage::GetCenterOfGravity(double& cx, double& cy, CRect* rect) const
{
    Centroid(*this, WholeOr(*this, rect), cx, cy, [](int, int) { return true; });
}

void CStlImage::GetCenterOfGravity(int& cx, int& cy, CRect* rect) const
{
    double x = 0.0;
    double y = 0.0;
    GetCenterOfGravity(x, y, rect);
    cx = Truncate(x + 0.5);
    cy = Truncate(y + 0.5);
}

void CStlImage::GetCenterOfGravityCircle(double& cx, double& cy, CRect* rect, CArray<int, int>* halfWidths) const
{
    const CRect kept = WholeOr(*this, rect);
    const CRect area = WorkingArea(*this, &kept);
    const double rx = (area.right - area.left) * 0.5;
    const double ry = (area.bottom - area.top) * 0.5;
    Centroid(*this, kept, cx, cy,
             [&](int x, int y) { return PtInRgn(x, y, area.left + rx, area.top + ry, rx, ry, halfWidths) != 0; });
}

void CStlImage::GetCenterOfGravityCircle(int& cx, int& cy, CRect* rect, CArray<int, int>* halfWidths) const
{
    double x = 0.0;
    double y = 0.0;
    GetCenterOfGravityCircle(x, y, rect, halfWidths);
    cx = Truncate(x + 0.5);
    cy = Truncate(y + 0.5);
}

int CStlImage::PtInRgn(int x, int y, double cx, double cy, double rx, double ry, CArray<int, int>* halfWidths)
{
    const std::int64_t column = std::abs(std::int64_t{x} - Truncate(cx));
    const std::int64_t row = std::abs(std::int64_t{y} - Truncate(cy));
    if (column > Truncate(rx) || row > Truncate(ry) || halfWidths == nullptr || row >= halfWidths->GetSize()) {
        return 0;
    }
    return column <= halfWidths->GetAt(static_cast<int>(row)) ? 1 : 0;
}

int CStlImage::GetFitPrm(CStlImage* ref, double& dx, double& dy, double& angle) const
{
    dx = 0.0;
    dy = 0.0;
    angle = 0.0;
    if (ref->IsValidStdCtr() == 0) {
        ref->SetDefaultCenter();
    }
    if (ref->IsValidStdPt(0) == 0 || IsValidStdPt(0) == 0) {
        return 0;
    }
    const CfPoint* const own = stdPt_;
    const CfPoint* const other = ref->stdPt_;
    dx = own[0].x - other[0].x;
    dy = own[0].y - other[0].y;
    const int ax = own[0].ix - own[1].ix;
    const int ay = own[0].iy - own[1].iy;
    const int bx = other[0].ix - other[1].ix;
    const int by = other[0].iy - other[1].iy;
    if (IsValidStdPt(1) == 0 || (ax == 0 && ay == 0) || (bx == 0 && by == 0)) {
        return 1;
    }
    const double turn = (Direction(-by, bx) - Direction(-ay, ax)) * kDegrees;
    angle = std::floor(turn * 10.0) * 0.1;
    return 2;
}

int CStlImage::GetFitPrm(CStlImage* ref, double& dx, double& dy, double& angle, double ox, double oy, double oa) const
{
    const int found = GetFitPrm(ref, dx, dy, angle);
    if (found != 0) {
        dx += ox;
        dy += oy;
    }
    if (found == 2) {
        angle += oa;
    }
    return found;
}
