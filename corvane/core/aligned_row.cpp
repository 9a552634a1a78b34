#include "corvane/core/aligned_row.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "corvane/core/kernel_sampler.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

/// True when no rounding of x - shift carries a position over a whole pixel, for any column x: whole shifts, and those
/// far enough from whole ones.
bool IsRegular(double shift)
{
    constexpr double kMargin = 1e-6;
    const double fraction = shift - std::floor(shift);
    return std::fabs(shift) < 1e9 && (fraction == 0.0 || (fraction > kMargin && fraction < 1.0 - kMargin));
}

/// A stretch of a row, `count` columns from `first` on, under a regular shift: source and target columns run side by
/// side.
class ShiftedStretch {
public:
    ShiftedStretch(const PlaneRows& plane, const Alignment& alignment, int first, int y, int count)
        : plane_(plane), dx_(alignment.dx), rows_(y - alignment.dy, plane.height), first_(first)
    {
        const double offset = std::ceil(dx_);
        const auto inside = [=](double x) { return static_cast<int>(std::clamp(x, 1.0 * first, 1.0 * first + count)); };
        begin_ = inside(offset);
        end_ = inside(std::ceil(dx_ + plane.width));
        offset_ = begin_ < end_ ? static_cast<int>(offset) : 0;
    }

    int Begin() const { return begin_; } ///< the first column of the row that lies inside
    int End() const { return std::max(begin_, end_); }

    /// values[0] belongs to the first column of the stretch.
    void Sample(Interpolation interpolation, double* values) const
    {
        const float* const above = plane_.Row(rows_.above);
        if (dx_ == offset_ && rows_.fraction == 0.0) {
            std::copy(above + begin_ - offset_, above + End() - offset_, values + begin_ - first_);
            return;
        }
        if (interpolation != Interpolation::kBilinear) {
            SampleRowByKernel(plane_, interpolation, begin_ - offset_, offset_ - dx_, rows_.above + rows_.fraction,
                              End() - begin_, values + begin_ - first_);
            return;
        }
        const float* const below = plane_.Row(rows_.below);
        const int last = plane_.width - 1 + offset_;
        const int plain = std::min(End(), last);
        for (int x = begin_; x < plain; ++x) {
            const int ix = x - offset_;
            values[x - first_] =
                Interpolate(above[ix], above[ix + 1], below[ix], below[ix + 1], Fraction(x), rows_.fraction);
        }
        if (begin_ <= last && last < End()) {
            const int ix = plane_.width - 1;
            values[last - first_] = Interpolate(above[ix], plane_.After(rows_.above), below[ix],
                                                plane_.After(rows_.below), Fraction(last), rows_.fraction);
        }
    }

private:
    double Fraction(int x) const { return (x - dx_) - (x - offset_); }

    const PlaneRows& plane_;
    double dx_;
    RowPair rows_;
    int first_;
    int begin_;
    int end_;
    int offset_;
};

void SampleShiftedStretch(const PlaneRows& plane, const Alignment& alignment, int x, int y, int count, double outside,
                          double* values, int* inside, Interpolation interpolation)
{
    const double sy = y - alignment.dy;
    int begin = count;
    int end = count;
    if (sy >= 0.0 && sy < plane.height) {
        const ShiftedStretch stretch(plane, alignment, x, y, count);
        begin = stretch.Begin() - x;
        end = stretch.End() - x;
        if (begin < end) {
            stretch.Sample(interpolation, values);
        }
    }
    std::fill(values, values + begin, outside);
    std::fill(values + end, values + count, outside);
    std::fill(inside, inside + begin, 0);
    std::fill(inside + begin, inside + end, 1);
    std::fill(inside + end, inside + count, 0);
}

/// Maps pixels of a row. Positions outside become one that is a number. True when all are above the last two rows:
/// there, what follows a row in storage follows it in memory too.
template <class Map>
bool MapRow(Map map, const PlaneRows& plane, int x, int y, int count, double* __restrict xs, double* __restrict ys,
            int* __restrict inside)
{
    const double width = plane.width;
    const double height = plane.height;
    const double last = height - 2;
    int isLow = 0;
    for (int i = 0; i < count; ++i) {
        const Position at = map(x + i, y);
        const bool isInside = (at.x >= 0.0) & (at.x < width) & (at.y >= 0.0) & (at.y < height);
        xs[i] = isInside ? at.x : 0.0;
        ys[i] = isInside ? at.y : 0.0;
        inside[i] = isInside;
        isLow |= ys[i] >= last;
    }
    return isLow == 0;
}

/// A stretch of a row under any map: positions first, all together, then the samples that they lie between.
class TurnedStretch {
public:
    static constexpr int kLength = 256;

    TurnedStretch(const PlaneRows& plane, const Mapping& mapping, int x, int y, int count)
        : plane_(plane), count_(count)
    {
        mapping.WithMap([&](auto map) { isInner_ = MapRow(map, plane, x, y, count, x_, y_, inside_); });
    }

    void Sample(Interpolation interpolation, double outside, double* values, int* inside) const
    {
        int end = 0;
        while (end < count_) { // positions that move along a curve may come back
            const int begin = static_cast<int>(std::find(inside_ + end, inside_ + count_, 1) - inside_);
            std::fill(values + end, values + begin, outside);
            end = static_cast<int>(std::find(inside_ + begin, inside_ + count_, 0) - inside_);
            if (interpolation == Interpolation::kBilinear) {
                SampleRun(begin, end, values);
            } else {
                SampleByKernel(plane_, interpolation, x_ + begin, y_ + begin, end - begin, values + begin);
            }
        }
        std::copy_n(inside_, count_, inside);
    }

private:
    /// Two samples that follow each other in memory.
    struct Pair {
        float first;
        float second;
    };

    void SampleRun(int begin, int end, double* values) const
    {
        if (isInner_) {
            SampleInner(begin, end, values);
            return;
        }
        for (int i = begin; i < end; ++i) {
            values[i] = BilinearAt(plane_, x_[i], y_[i]);
        }
    }

    void SampleInner(int begin, int end, double* values) const
    {
        Pair above[kLength];
        Pair below[kLength];
        for (int i = begin; i < end; ++i) {
            const float* const sample = plane_.Row(static_cast<int>(y_[i])) + static_cast<int>(x_[i]);
            std::memcpy(&above[i], sample, sizeof(Pair));
            std::memcpy(&below[i], sample + plane_.width, sizeof(Pair));
        }
        for (int i = begin; i < end; ++i) {
            const double fx = x_[i] - static_cast<int>(x_[i]);
            const double fy = y_[i] - static_cast<int>(y_[i]);
            values[i] = Interpolate(above[i].first, above[i].second, below[i].first, below[i].second, fx, fy);
        }
    }

    const PlaneRows& plane_;
    int count_;
    bool isInner_ = false;
    double x_[kLength];
    double y_[kLength];
    int inside_[kLength];
};

/// The whole plane of an image. The page of the sample that follows it is touched too.
PlaneRows WholePlane(const CStlImage& image, int plane)
{
    const int last = image.GetHeight() - 1;
    const float after = plane + 1 < image.GetPlanes() ? image.GetPixelGrayRaw(0, 0, plane + 1)
                                                      : image.GetPixelGrayRaw(image.GetWidth() - 1, last, plane);
    return {image.GetImageAdr(0, 0, plane, 1), image.GetWidth(), image.GetHeight(), 0, after};
}

/// Brings in the pages that columns `x` to before `x + count` of a frame's row y read.
void BringPages(const CStlImage& image, int plane, const Mapping& mapping, int x, int y, int count,
                Interpolation interpolation)
{
    const RowSpan rows = RowsTouched(mapping, x, y, count, image.GetWidth(), image.GetHeight(), interpolation);
    if (!IsPaged(image) || rows.first == rows.end) {
        return;
    }
    for (int row = rows.first; row < rows.end; row += image.GetStore()->GetRowsPerPage()) {
        image.GetImageAdr(0, row, plane, 1);
    }
    image.GetImageAdr(0, rows.end - 1, plane, 1);
}

} // namespace

RowSpan RowsTouched(const Mapping& mapping, int x, int y, int count, int width, int height, Interpolation interpolation)
{
    const int farther = ReachOf(interpolation) - 1;
    const auto [from, to] = mapping.RangeOfY(x, y, count);
    const double low = std::floor(from) - 1.0; // a row of room on either side covers rounding
    const double high = std::floor(to) + 4.0;  // the row below, and the sample that follows it
    if (width < 1 || count < 1 || !(high > 0.0) || !(low < height)) {
        return {0, 0};
    }
    return {static_cast<int>(std::max(low - farther, 0.0)), static_cast<int>(std::min(high + farther, 1.0 * height))};
}

void SampleAlignedRow(const CStlImage& image, int plane, const Alignment& alignment, int y, int count, double outside,
                      double* values, int* inside)
{
    SampleAlignedStretch(image, plane, alignment, 0, y, count, outside, values, inside);
}

void SampleAlignedStretch(const CStlImage& image, int plane, const Mapping& mapping, int x, int y, int count,
                          double outside, double* values, int* inside, Interpolation interpolation)
{
    constexpr int kPagedColumns = 64; // few, so that the pages that a steep turn reads stay within the budget
    const int length = IsPaged(image) && !mapping.IsShift() ? kPagedColumns : count;
    const PlaneRows rows = WholePlane(image, plane);
    for (int done = 0; done < count; done += length) {
        const int columns = std::min(length, count - done);
        BringPages(image, plane, mapping, x + done, y, columns, interpolation);
        SampleAlignedStretch(rows, mapping, x + done, y, columns, outside, values + done, inside + done, interpolation);
    }
}

void SampleAlignedStretch(const PlaneRows& plane, const Mapping& mapping, int x, int y, int count, double outside,
                          double* values, int* inside, Interpolation interpolation)
{
    if (mapping.IsShift() && IsRegular(mapping.AsAlignment()->dx)) {
        SampleShiftedStretch(plane, *mapping.AsAlignment(), x, y, count, outside, values, inside, interpolation);
        return;
    }
    for (int done = 0; done < count; done += TurnedStretch::kLength) {
        const int length = std::min(TurnedStretch::kLength, count - done);
        const TurnedStretch stretch(plane, mapping, x + done, y, length);
        stretch.Sample(interpolation, outside, values + done, inside + done);
    }
}

void LeaveOutWrapped(const Mapping& mapping, int width, int x, int y, int count, int* inside)
{
    if (mapping.KeepsColumns()) {
        return;
    }
    const double last = width - 1;
    mapping.WithMap([&](auto map) {
        for (int i = 0; i < count; ++i) {
            inside[i] &= map(x + i, y).x <= last ? 1 : 0;
        }
    });
}

} // namespace corvane
