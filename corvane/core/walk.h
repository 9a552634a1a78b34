#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/threads.h"
#include "corvane/platform/export.h"
#include "corvane/platform/workers.h"

namespace corvane {

/// The rectangle that an operation works on: each edge clamped by itself into the image, null the whole image.
/// It is not put in order: with left >= right its rows hold no samples.
inline CRect WorkingArea(const CImage& image, const CRect* rect)
{
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    if (rect == nullptr) {
        return {0, 0, width, height};
    }
    const auto inside = [](LONG v, int size) { return std::min(std::max(static_cast<int>(v), 0), size); };
    return {inside(rect->left, width), inside(rect->top, height), inside(rect->right, width),
            inside(rect->bottom, height)};
}

/// Calls visit(row) for each row of a plane, from the top down. Those of an image that is not const are to be written.
template <class Image, class Visit>
void ForEachRow(Image& image, int plane, Visit visit)
{
    using Sample = std::conditional_t<std::is_const_v<Image>, const float, float>;
    for (int y = 0; y < image.GetHeight(); ++y) {
        Sample* const row = image.GetImageAdr(0, y, plane, std::is_const_v<Image> ? 1 : 0);
        visit(row);
    }
}

/// The plane of the source that stands for a plane of the target: its last one for those that it lacks.
inline int PlaneOf(const CImage& source, int plane)
{
    return std::min(plane, std::max(source.GetPlanes() - 1, 0));
}

/// How many threads share the work on so many samples where `most` may: one where it is done before another has
/// started.
inline int ThreadsFor(long long samples, int most = Threads())
{
    constexpr long long kFewSamples = 1 << 18;
    return samples < kFewSamples ? 1 : most;
}

/// Rows `first` to before `end` of a plane.
struct RowBlock {
    int plane;
    int first;
    int end;

    int Rows() const { return end - first; }
};

/// The rows of an area in each of so many planes, cut into blocks by their length alone: plane after plane, from the
/// top down. Bands of `band` rows, counted from the top, stay together.
class CORVANE_VISIBLE RowBlocks {
public:
    explicit RowBlocks(const CRect& area, int planes = 1, int band = 1);

    int Count() const { return planes_ * blocksOfPlane_; }
    RowBlock operator[](int i) const;
    long long Samples() const { return static_cast<long long>(end_ - first_) * columns_ * planes_; }

private:
    int first_;
    int end_;
    int columns_;
    int planes_;
    int rowsOfBlock_;
    int blocksOfPlane_;
};

/// Whether the samples of an image are kept in a file.
bool IsPaged(const CImage& image);

/// Whether several threads may write rows of `target` while they read any of `sources`: none of these shares samples
/// with it, and none of the images is paged. Those wait for the disk; what more threads write to pages that are let go
/// meanwhile would take memory beyond the budget. Null is no source.
CORVANE_VISIBLE bool MayShareWork(const CImage& target, std::initializer_list<const CImage*> sources);

/// How many of `most` threads work on rows of `target` that are made from `sources`: one if these may not share work.
inline int ThreadsOn(const CImage& target, std::initializer_list<const CImage*> sources, int most = Threads())
{
    return MayShareWork(target, sources) ? most : 1;
}

/// Calls body(block) for blocks of rows, on the workers where there is enough to do, and tick(block) for one after the
/// other, when it and all before it are done, on the caller's thread. A body of two parameters is told the number of
/// its thread, too. `body` has no state that two blocks share, and no run that somebody listens to.
template <class Body, class Tick>
void ForRowBlocks(const RowBlocks& blocks, int threads, Body body, Tick tick)
{
    const auto call = [&](int i, int thread) {
        if constexpr (std::is_invocable_v<Body&, RowBlock, int>) {
            body(blocks[i], thread);
        } else {
            body(blocks[i]);
        }
    };
    platform::ForBlocks(blocks.Count(), ThreadsFor(blocks.Samples(), threads), call, [&](int i) { tick(blocks[i]); });
}

/// The same where nobody counts.
template <class Body>
void ForRowBlocks(const RowBlocks& blocks, int threads, Body body)
{
    ForRowBlocks(blocks, threads, body, [](const RowBlock&) {});
}

/// Counts the rows of a block, one after the other.
inline void CountRows(Stage& stage, const RowBlock& block, int steps = 1)
{
    for (int step = block.Rows() * steps; step > 0; --step) {
        stage.Step();
    }
}

/// Calls visit(row, plane) for every row of the first planes of an image, to be written, on the workers where there is
/// enough to do.
template <class Visit>
void WriteRows(CStlImage& image, int planes, Visit visit)
{
    ForRowBlocks(RowBlocks(WorkingArea(image, nullptr), planes), ThreadsOn(image, {}), [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            visit(image.GetImageAdr(0, y, block.plane), block.plane);
        }
    });
}

/// Calls body(block) for blocks of rows of `target` that are made from `sources`, on the workers of the stage's run,
/// and counts `steps` steps a row. Images that may not share work are walked by the caller alone.
template <class Body>
void WalkBlocks(const RowBlocks& blocks, const CImage& target, std::initializer_list<const CImage*> sources,
                Stage& stage, int steps, Body body)
{
    ForRowBlocks(blocks, ThreadsOn(target, sources, stage.Threads()), body,
                 [&](const RowBlock& block) { CountRows(stage, block, steps); });
}

/// Calls row(y) for the rows of an area of `target`, whose planes are taken together: a stage with one step a row. Each
/// block of rows has a copy of `row`, which may so keep buffers.
template <class Row>
void WalkLines(CStlImage& target, std::initializer_list<const CImage*> sources, const CRect& area, const Run& run,
               int textId, Row row)
{
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top));
    WalkBlocks(RowBlocks(area), target, sources, stage, 1, [&](const RowBlock& block) {
        Row ownRow = row;
        for (int y = block.first; y < block.end; ++y) {
            ownRow(y);
        }
    });
}

/// What makes the rows of each plane. All are made beforehand, and each is used by several threads at a time.
template <class KernelOf>
auto KernelsOf(const CImage& target, KernelOf kernelOf)
{
    std::vector<decltype(kernelOf(0))> kernels;
    for (int plane = 0; plane < target.GetPlanes(); ++plane) {
        kernels.push_back(kernelOf(plane));
    }
    return kernels;
}

/// Walks the planes and rows of an area that lies in the target: gives each row to the kernel that `kernelOf(plane)`
/// makes, as (source, target, count), and counts one step of the stage.
///
/// Source and target usually have one size. A smaller source is not read outside: rows below it repeat its last row,
/// planes it does not have repeat its last plane, and target columns to the right of it keep their samples. So do all
/// where the source has no samples.
/// A source that is the target is read where it is written, so its rows may go to several threads like others.
template <class KernelOf>
void WalkArea(CStlImage& target, const CStlImage& source, const CRect& area, Stage& stage, KernelOf kernelOf)
{
    const auto kernels = KernelsOf(target, kernelOf);
    const int count = std::min<int>(area.right, source.GetWidth()) - static_cast<int>(area.left);
    const int end = count > 0 && source.GetPixelCount() > 0 ? static_cast<int>(area.bottom) : 0;
    const CImage* const other = &source == &target ? nullptr : &source;
    WalkBlocks(RowBlocks(area, target.GetPlanes()), target, {other}, stage, 1, [&](const RowBlock& block) {
        const auto& kernel = kernels[static_cast<std::size_t>(block.plane)];
        for (int y = block.first; y < std::min(block.end, end); ++y) {
            kernel(source.GetImageAdr(area.left, y, PlaneOf(source, block.plane), 1),
                   target.GetImageAdr(area.left, y, block.plane), count);
        }
    });
}

/// The walk of most operations: clips the rectangle into the target, begins a stage with one step a row, and walks the
/// area. Throws Cancelled when the run asks to stop.
template <class KernelOf>
void WalkRows(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId,
              KernelOf kernelOf)
{
    const CRect area = WorkingArea(target, rect);
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top) * target.GetPlanes());
    WalkArea(target, source, area, stage, kernelOf);
}

/// An operation of one sample at a time: `functionOf(plane)` gives the function from source to target value, in double.
template <class FunctionOf>
void MapPlanes(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId,
               FunctionOf functionOf)
{
    WalkRows(target, source, rect, run, textId, [&](int plane) {
        return [function = functionOf(plane)](const float* in, float* out, int count) {
            for (int x = 0; x < count; ++x) {
                out[x] = static_cast<float>(function(in[x]));
            }
        };
    });
}

} // namespace corvane
