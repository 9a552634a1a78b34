#pragma once

#include <algorithm>
#include <type_traits>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

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

/// Calls row(y) for the rows of an area, whose planes are taken together: a stage with one step a row.
template <class Row>
void WalkLines(const CRect& area, const Run& run, int textId, Row row)
{
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top));
    for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
        row(y);
        stage.Step();
    }
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
    for (int plane = 0; plane < target.GetPlanes(); ++plane) {
        const auto kernel = kernelOf(plane);
        const int sourcePlane = PlaneOf(source, plane);
        const int count = std::min<int>(area.right, source.GetWidth()) - static_cast<int>(area.left);
        for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
            if (count > 0 && source.GetPixelCount() > 0) {
                kernel(source.GetImageAdr(area.left, y, sourcePlane, 1), target.GetImageAdr(area.left, y, plane),
                       count);
            }
            stage.Step();
        }
    }
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
