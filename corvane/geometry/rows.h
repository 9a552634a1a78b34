#pragma once

#include <algorithm>

#include "corvane/core/walk.h"

namespace corvane {

/// The rows of a source as operations that move samples read them: a row, a column or a plane that it does not have is
/// the nearest one that it has. A source without samples reads as 0.
class SourceRows {
public:
    explicit SourceRows(const CStlImage& source)
        : source_(source), width_(source.GetPixelCount() > 0 ? source.GetWidth() : 1),
          height_(std::max(source.GetHeight(), 1))
    {}

    int Width() const { return width_; }
    int Height() const { return height_; }
    int Plane(int plane) const { return PlaneOf(source_, plane); }
    /// `Width` samples.
    const float* Row(int y, int plane) const { return source_.GetImageAdr(0, y, Plane(plane), 1); }

    /// Writes `count` samples from column x on.
    void Copy(long long x, int y, int plane, int count, float* out) const
    {
        const float* const row = Row(y, plane);
        const int first = static_cast<int>(std::clamp<long long>(-x, 0, count));
        const int end = static_cast<int>(std::clamp<long long>(width_ - x, first, count));
        std::fill(out, out + first, row[0]);
        std::copy_n(row + (x + first), end - first, out + first);
        std::fill(out + end, out + count, row[width_ - 1]);
    }

    /// `count` samples from column x on, where they are, or copied where the source has not all of them.
    const float* Stretch(long long x, int y, int plane, int count, float* copy) const
    {
        if (x >= 0 && x + count <= width_) {
            return Row(y, plane) + x;
        }
        Copy(x, y, plane, count, copy);
        return copy;
    }

    /// Writes `count` samples from column x, taken into the source, backwards.
    void CopyMirrored(int x, int y, int plane, int count, float* out) const
    {
        const float* const row = Row(y, plane);
        const float* const last = row + std::clamp(x, 0, width_ - 1);
        const int end = std::min(count, static_cast<int>(last - row) + 1);
        for (int i = 0; i < end; ++i) {
            out[i] = *(last - i);
        }
        std::fill(out + end, out + count, row[0]);
    }

private:
    const CStlImage& source_;
    int width_;
    int height_;
};

/// Walks the planes of `target`, all of it, in bands of so many rows: begins a stage with one step a row, calls
/// fill(plane, y, rows) with the first row of each band and the number of them, and ends it. What it fills them from is
/// the source alone. The rows are one of `parts` that the stage has room for. Each block of bands has a copy of `fill`,
/// which may so keep buffers.
template <class Fill>
void FillBands(CStlImage& target, const CStlImage& source, const Run& run, int textId, int bandRows, Fill fill,
               int parts = 1)
{
    Stage stage(run, textId, parts * target.GetHeight() * target.GetPlanes());
    const RowBlocks blocks(WorkingArea(target, nullptr), target.GetPlanes(), bandRows);
    WalkBlocks(blocks, target, {&source}, stage, 1, [&](const RowBlock& block) {
        Fill ownFill = fill;
        for (int y = block.first; y < block.end; y += bandRows) {
            ownFill(block.plane, y, std::min(bandRows, block.end - y));
        }
    });
}

/// The same row by row: calls fill(plane, y, row) with the row to be written.
template <class Fill>
void FillRows(CStlImage& target, const CStlImage& source, const Run& run, int textId, Fill fill, int parts = 1)
{
    const auto fillRow = [&target, fill](int plane, int y, int) mutable {
        fill(plane, y, target.GetImageAdr(0, y, plane));
    };
    FillBands(target, source, run, textId, 1, fillRow, parts);
}

} // namespace corvane
