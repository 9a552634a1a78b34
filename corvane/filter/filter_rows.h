#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "corvane/core/stl_image.h"
#include "corvane/core/walk.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// The widest band: a Gaussian of the largest deviation.
inline constexpr int kMostRadius = 10;

/// The most rows that are made together.
inline constexpr int kMostRowsTogether = 8;

/// The rows of a plane about row y, or about as many rows from there on as are made together, mirrored at the edges,
/// from column 0.
class Band {
public:
    Band(const CStlImage& image, int y, int plane, int radius, int together = 1)
        : radius_(radius), width_(image.GetWidth())
    {
        for (int i = 0; i < 2 * radius + together; ++i) {
            rows_[i] =
                image.GetImageAdr(0, MirrorRow(static_cast<long long>(y) + i - radius, image.GetHeight()), plane, 1);
        }
    }

    int Radius() const { return radius_; }
    int Width() const { return width_; }
    /// The row dy below row y.
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
    const float* rows_[2 * kMostRadius + kMostRowsTogether];
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

/// Columns that are worked on at a time: few enough for what is made of them to stay in the nearest cache.
inline constexpr int kBlockColumns = 96;

/// Calls use(begin, count) for the blocks of at most `kBlockColumns` columns from `begin` to before `end`.
///
/// While one block is worked on in the nearest cache, nothing would come from or go to memory, and the processor does
/// not fetch ahead of stores by itself: samples of a block to come, in the band's lowest row and in the target, are
/// asked for before. That is the next row's where this one ends, and asking for what is nowhere does nothing. With a
/// small block few samples are asked for at a time, which the processor does not have to wait for.
template <class Use>
void ForEachBlock(const Band& band, int begin, int end, const float* out, Use use)
{
    constexpr int kLine = 64 / sizeof(float); // of the cache
    constexpr int kAhead = 256;
    for (int next = begin; begin < end; begin = next) {
        next = std::min(begin + kBlockColumns, end);
        for (int x = next + kAhead; x < next + kAhead + kBlockColumns; x += kLine) {
            __builtin_prefetch(band.Row(band.Radius()) + x);
            __builtin_prefetch(out + x, 1);
        }
        use(begin, next - begin);
    }
}

/// The columns of an area that the source has too.
class SharedColumns {
public:
    SharedColumns(const CStlImage& source, const CRect& area)
        : left_(static_cast<int>(area.left)),
          right_(source.GetPixelCount() > 0 ? std::min(static_cast<int>(area.right), source.GetWidth()) : left_)
    {}

    int Left() const { return left_; }
    int Right() const { return right_; }
    bool Any() const { return left_ < right_; }

private:
    int left_;
    int right_;
};

/// Walks the rows of a filter, as many together as said: `kernelOf(plane)` gives a kernel, and make(kernel, columns,
/// plane, y, rows) has it make the rows from y on. Fewer are left together at the end of a block.
template <class KernelOf, class Make>
void WalkFilter(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId, int together,
                KernelOf kernelOf, Make make)
{
    const CRect area = WorkingArea(target, rect);
    const SharedColumns columns(source, area);
    const auto kernels = KernelsOf(target, kernelOf);
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top) * target.GetPlanes());
    WalkBlocks(RowBlocks(area, target.GetPlanes(), together), target, {&source}, stage, 1, [&](const RowBlock& block) {
        for (int y = block.first; columns.Any() && y < block.end; y += together) {
            make(kernels[static_cast<std::size_t>(block.plane)], columns, block.plane, y,
                 std::min(together, block.end - y));
        }
    });
}

/// Walks a filter: `kernelOf(plane)` gives the kernel, which is called for each row as kernel(band, left, right, out)
/// with the band of the source and the target row, both from column 0. It keeps no buffers: threads share it.
template <class KernelOf>
void FilterRows(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId, int radius,
                KernelOf kernelOf)
{
    WalkFilter(target, source, rect, run, textId, 1, kernelOf,
               [&](const auto& kernel, const SharedColumns& columns, int plane, int y, int) {
                   kernel(Band(source, y, PlaneOf(source, plane), radius), columns.Left(), columns.Right(),
                          target.GetImageAdr(0, y, plane));
               });
}

/// The same for kernels that make several rows together, which share what they read: called as kernel(band, left,
/// right, out), with the rows of the target.
template <class KernelOf>
void FilterRowsTogether(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId,
                        int radius, KernelOf kernelOf)
{
    WalkFilter(target, source, rect, run, textId, kMostRowsTogether, kernelOf,
               [&](const auto& kernel, const SharedColumns& columns, int plane, int y, int rows) {
                   std::array<float*, kMostRowsTogether> out{};
                   for (int i = 0; i < rows; ++i) {
                       out[static_cast<std::size_t>(i)] = target.GetImageAdr(0, y + i, plane);
                   }
                   kernel(Band(source, y, PlaneOf(source, plane), radius, kMostRowsTogether), columns.Left(),
                          columns.Right(), std::span(out).first(static_cast<std::size_t>(rows)));
               });
}

} // namespace corvane::filter
