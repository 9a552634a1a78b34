#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
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

/// Work on fewer samples stays on the caller's thread: it is done before another has started.
inline constexpr long long kFewSamples = 1 << 18;

/// Rows `first` to before `end` of a plane.
struct RowBlock {
    int plane;
    int first;
    int end;
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

/// Whether several threads may write rows of `target` while they read any of `sources`: none of the images is paged,
/// since a page table belongs to one thread, and none of the sources shares samples with the target.
CORVANE_VISIBLE bool MayShareWork(const CImage& target, std::initializer_list<const CImage*> sources);

/// Calls body(block) for blocks of rows of `target` that are made from `sources`, on the workers of the stage's run
/// where there is enough to do, and counts `steps` steps a row on the caller's thread. Images that may not share work
/// are walked by the caller alone. `body` has no state that two blocks share, and no run that somebody listens to.
template <class Body>
void WalkBlocks(const RowBlocks& blocks, const CImage& target, std::initializer_list<const CImage*> sources,
                Stage& stage, int steps, Body body)
{
    const int threads = blocks.Samples() < kFewSamples || !MayShareWork(target, sources) ? 1 : stage.Threads();
    platform::ForBlocks(
        blocks.Count(), threads, [&](int i) { body(blocks[i]); },
        [&](int i) {
            for (int step = (blocks[i].end - blocks[i].first) * steps; step > 0; --step) {
                stage.Step();
            }
        });
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
template <class KernelOf>
void WalkArea(CStlImage& target, const CStlImage& source, const CRect& area, Stage& stage, KernelOf kernelOf)
{
    const auto kernels = KernelsOf(target, kernelOf);
    const int count = std::min<int>(area.right, source.GetWidth()) - static_cast<int>(area.left);
    const int end = count > 0 && source.GetPixelCount() > 0 ? static_cast<int>(area.bottom) : 0;
    WalkBlocks(RowBlocks(area, target.GetPlanes()), target, {&source}, stage, 1, [&](const RowBlock& block) {
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
