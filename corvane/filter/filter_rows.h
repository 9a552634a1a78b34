#pragma once

#include <algorithm>

#include "corvane/core/stl_image.h"
#include "corvane/core/walk.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// The widest band: a Gaussian of the largest deviation.
inline constexpr int kMostRadius = 10;

/// The rows of a plane about row y, mirrored at the edges, from column 0. They are locked in the store until its
/// `UnlockAll`.
class Band {
public:
    Band(const CStlImage& image, int y, int plane, int radius) : radius_(radius), width_(image.GetWidth())
    {
        for (int i = 0; i <= 2 * radius; ++i) {
            rows_[i] = image.GetImageAdr(0, MirrorRow(static_cast<long long>(y) + i - radius, image.GetHeight()), plane,
                                         1 | 2);
        }
    }

    int Radius() const { return radius_; }
    int Width() const { return width_; }
    /// The row dy below the centre.
    const float* Row(int dy) const { return rows_[dy + radius_]; }

    /// The neighbourhood of column x.
    Neighbours At(int x, int type) const
    {
        const float* shifted[2 * kMostPointRadius + 1];
        const int r = filter::Radius(type);
        for (int dy = -r; dy <= r; ++dy) {
            shifted[dy + r] = Row(dy) + x;
        }
        return {shifted, x, width_, type};
    }

private:
    const float* rows_[2 * kMostRadius + 1];
    int radius_;
    int width_;
};

/// Calls inner(begin, end) for the columns that have `margin` neighbours on either side within the row, and edge(x) for
/// the others.
template <class Inner, class Edge>
void SplitColumns(int left, int right, int width, int margin, Inner inner, Edge edge)
{
    const int begin = std::min(std::max(left, margin), right);
    const int end = std::max(std::min(right, width - margin), begin);
    for (int x = left; x < begin; ++x) {
        edge(x);
    }
    if (begin < end) {
        inner(begin, end);
    }
    for (int x = end; x < right; ++x) {
        edge(x);
    }
}

/// Calls use(begin, count) for the blocks of at most `columns` columns from `begin` to before `end`.
///
/// While one block is worked on in the nearest cache, nothing would come from or go to memory, and the processor does
/// not fetch ahead of stores by itself: the next block's samples, in the band's lowest row and in the target, are asked
/// for before.
template <class Use>
void ForEachBlock(const Band& band, int begin, int end, int columns, const float* out, Use use)
{
    constexpr int kLine = 64 / sizeof(float); // of the cache
    for (int next = begin; begin < end; begin = next) {
        next = std::min(begin + columns, end);
        for (int x = next; x < std::min(next + columns, end); x += kLine) {
            __builtin_prefetch(band.Row(band.Radius()) + x);
            __builtin_prefetch(out + x, 1);
        }
        use(begin, next - begin);
    }
}

/// Calls row(y, left, right) for the rows of an area, with the columns that the source has too, and releases the rows
/// of both images after it. A row counts `steps` steps of the stage.
template <class Row>
void WalkLocked(CStlImage& target, const CStlImage& source, const CRect& area, Stage& stage, int steps, Row row)
{
    const int left = static_cast<int>(area.left);
    const int right = source.GetPixelCount() > 0 ? std::min(static_cast<int>(area.right), source.GetWidth()) : left;
    for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
        if (left < right) {
            row(y, left, right);
            source.UnlockAll();
            target.UnlockAll();
        }
        for (int step = 0; step < steps; ++step) {
            stage.Step();
        }
    }
}

/// Walks a filter: `kernelOf(plane)` gives the kernel, which is called for each row as kernel(band, left, right, out)
/// with the band of the source and the target row, both from column 0.
template <class KernelOf>
void FilterRows(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId, int radius,
                KernelOf kernelOf)
{
    const CRect area = WorkingArea(target, rect);
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top) * target.GetPlanes());
    for (int plane = 0; plane < target.GetPlanes(); ++plane) {
        const auto kernel = kernelOf(plane);
        WalkLocked(target, source, area, stage, 1, [&](int y, int left, int right) {
            kernel(Band(source, y, PlaneOf(source, plane), radius), left, right, target.GetImageAdr(0, y, plane));
        });
    }
}

} // namespace corvane::filter
