#include "corvane/draw/strokes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

namespace corvane {
namespace {

constexpr double kMostThickness = 1e6;
constexpr double kFar = 1e10; // beyond the samples of any image by more than half of the greatest thickness

/// Cuts the line from (a, aOther) to (b, bOther) off where its first coordinate leaves low..high; false when nothing is
/// left. Halves and weights keep what is calculated finite.
bool Cut(double& a, double& aOther, double& b, double& bOther, double low, double high)
{
    if (std::max(a, b) < low || std::min(a, b) > high) {
        return false;
    }
    const auto otherAt = [a, aOther, b, bOther](double bound) {
        const double t = (bound * 0.5 - a * 0.5) / (b * 0.5 - a * 0.5);
        return aOther * (1.0 - t) + bOther * t;
    };
    if (const double inside = std::clamp(a, low, high); inside != a) {
        aOther = otherAt(inside);
        a = inside;
    }
    if (const double inside = std::clamp(b, low, high); inside != b) {
        bOther = otherAt(inside);
        b = inside;
    }
    return true;
}

bool CutX(Segment& s, double low, double high)
{
    return Cut(s.x0, s.y0, s.x1, s.y1, low, high);
}

bool CutY(Segment& s, double low, double high)
{
    return Cut(s.y0, s.x0, s.y1, s.x1, low, high);
}

bool IsFinite(const Segment& s)
{
    return std::isfinite(s.x0) && std::isfinite(s.y0) && std::isfinite(s.x1) && std::isfinite(s.y1);
}

/// Cuts off what is so far away that numbers would get too large to calculate with; false when nothing is left.
bool CutFar(Segment& s)
{
    return IsFinite(s) && CutX(s, -kFar, kFar) && CutY(s, -kFar, kFar);
}

/// True when a line passes the area at no more than `reach`, or a corner of it a little further away.
bool Passes(Segment s, const CRect& area, double reach)
{
    return CutX(s, static_cast<double>(area.left) - reach, static_cast<double>(area.right) + reach) &&
           CutY(s, static_cast<double>(area.top) - reach, static_cast<double>(area.bottom) + reach);
}

double Top(const Segment& s)
{
    return std::min(s.y0, s.y1);
}

/// How much of each sample of a row is covered by strokes, for the rows of an area that is not empty.
///
/// Rows are asked for from top to bottom; only the segments that reach a row are looked at. What is covered does not
/// depend on the area.
class Coverage {
public:
    Coverage(const Segments& segments, double thickness, const CRect& area)
        : left_(static_cast<int>(area.left)), right_(static_cast<int>(area.right)),
          radius_(std::min(thickness, kMostThickness) * 0.5)
    {
        for (Segment segment : segments) {
            if (CutFar(segment) && Passes(segment, area, Reach())) {
                segments_.push_back(segment);
            }
        }
        std::sort(segments_.begin(), segments_.end(),
                  [](const Segment& a, const Segment& b) { return Top(a) < Top(b); });
        covered_.resize(static_cast<std::size_t>(right_ - left_));
    }

    /// Works out row y, below the one before.
    void MoveTo(int y)
    {
        std::fill_n(covered_.begin() + (first_ - left_), last_ - first_, 0.0);
        first_ = last_ = left_;
        for (; next_ < segments_.size() && Top(segments_[next_]) <= y + Reach(); ++next_) {
            active_.push_back(segments_[next_]);
        }
        std::erase_if(active_, [&](const Segment& s) { return std::max(s.y0, s.y1) < y - Reach(); });
        for (const Segment& segment : active_) {
            Cover(segment, y);
        }
    }

    /// @name The columns of the row that may be covered, and how much of each, 0 to 1
    /// @{
    int First() const { return first_; }
    int Count() const { return last_ - first_; }
    const double* Covered() const { return covered_.data() + (first_ - left_); }
    /// @}

private:
    double Reach() const { return radius_ + 0.5; }

    int Column(double x) const { return static_cast<int>(std::clamp<double>(x, left_, right_)); }

    void Cover(const Segment& segment, int y)
    {
        Segment crossing = segment;
        if (!CutY(crossing, y - Reach(), y + Reach())) {
            return;
        }
        const int first = Column(std::ceil(std::min(crossing.x0, crossing.x1) - Reach()));
        const int last = Column(std::floor(std::max(crossing.x0, crossing.x1) + Reach()) + 1.0);
        if (first >= last) {
            return;
        }
        CoverColumns(segment, y, first, last);
        first_ = last_ > first_ ? std::min(first_, first) : first;
        last_ = std::max(last_, last);
    }

    void CoverColumns(const Segment& s, int y, int first, int last)
    {
        const double dx = s.x1 - s.x0;
        const double dy = s.y1 - s.y0;
        const double square = dx * dx + dy * dy;
        const double perSquare = square >= std::numeric_limits<double>::min() ? 1.0 / square : 0.0;
        const double py = y - s.y0;
        double* const covered = covered_.data() + (first - left_);
        for (int i = 0; i < last - first; ++i) {
            const double px = first + i - s.x0;
            const double along = (px * dx + py * dy) * perSquare;
            const double t = std::min(std::max(along, 0.0), 1.0);
            const double ox = px - t * dx;
            const double oy = py - t * dy;
            const double distance = std::sqrt(ox * ox + oy * oy);
            const double part = std::min(radius_ - distance, 0.5) + std::min(radius_ + distance, 0.5);
            covered[i] = std::max(covered[i], part);
        }
    }

    int left_;
    int right_;
    double radius_;
    Segments segments_;
    Segments active_;
    std::size_t next_ = 0;
    int first_ = left_;
    int last_ = left_;
    std::vector<double> covered_;
};

void BlendRow(float* row, const double* covered, int count, double value, BlankTest isBlank)
{
    for (int x = 0; x < count; ++x) {
        const double v = row[x];
        const double c = covered[x];
        const bool isDefined = (v - v == 0.0) & !isBlank(v);
        const double mixed = (1.0 - c) * v + c * value;
        const double replaced = c >= 0.5 ? value : v;
        row[x] = c > 0.0 ? static_cast<float>(isDefined ? mixed : replaced) : row[x];
    }
}

void Burn(CStlImage& image, const CRect& area, const Pen& pen, const Segments& segments)
{
    const BlankTest isBlank(image);
    Coverage coverage(segments, pen.thickness, area);
    for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
        coverage.MoveTo(y);
        for (int plane = 0; plane < image.GetPlanes() && coverage.Count() > 0; ++plane) {
            if (pen.plane == -1 || pen.plane == plane) {
                const double value = pen.raw != 0 ? pen.value : DisplayScale(image, plane).ToRaw(pen.value);
                BlendRow(image.GetImageAdr(coverage.First(), y, plane), coverage.Covered(), coverage.Count(), value,
                         isBlank);
            }
        }
    }
}

} // namespace

void DrawStrokes(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, const Pen& pen,
                 const Segments& segments)
{
    WalkRows(target, source, rect, run, IDS_CALCULATION,
             [](int) { return [](const float* in, float* out, int count) { std::copy_n(in, count, out); }; });
    const CRect area = WorkingArea(target, rect);
    if (pen.thickness > 0.0 && area.right > area.left && area.bottom > area.top) {
        Burn(target, area, pen, segments);
    }
}

} // namespace corvane
