#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "stack/combine/frame_source.h"

namespace corvane::stack {

/// The rows of one frame that a band of the target needs, of all planes. Rows that the next band needs too are kept, so
/// that a walk from the first band to the last reads every row once, whichever way the frame is turned. A row of the
/// target crosses many rows of a turned frame; a strip of its columns crosses fewer.
class RowWindow {
public:
    /// Reads rows into samples + plane * planeStride, for all planes.
    using Reader = std::function<void(int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)>;

    /// For columns left to right - 1 of the target.
    RowWindow(const Mapping& mapping, const FrameFacts& frame, int left, int right,
              Interpolation interpolation = Interpolation::kBilinear);

    /// Rows of the frame that rows firstRow to lastRow of the target touch; empty when they touch none.
    RowSpan Touched(int firstRow, int lastRow) const;
    /// Takes room for so many rows of the frame, before the first `MoveTo`. On the caller's thread: memory that several
    /// threads take and give back does not come together for the next ones.
    void Reserve(int rows);
    /// Brings in what rows firstRow to lastRow of the target touch, no more than there is room for.
    void MoveTo(int firstRow, int lastRow, const Reader& read);
    /// Samples a stretch of a row of the target from a plane, `count` of its columns from x on: values and whether they
    /// lie inside.
    void Sample(int plane, int x, int row, int count, double outside, double* values, int* inside) const;
    /// Takes samples of a stretch out of those inside that lie right of the last column: beyond it, the sampler goes on
    /// to the first sample of the next row.
    void LeaveOutWrapped(int x, int row, int count, int* inside) const;

    /// The rows of the frame that are in memory.
    RowSpan Held() const { return {first_, first_ + count_}; }
    /// Row y of a plane, one of those.
    const float* Row(int plane, int y) const
    {
        return samples_.get() + plane * PlaneStride() + static_cast<std::ptrdiff_t>(y - first_) * width_;
    }

private:
    RowSpan Keep(const RowSpan& wanted);
    void ReadFollowers(const Reader& read);
    std::ptrdiff_t PlaneStride() const { return static_cast<std::ptrdiff_t>(capacity_) * width_; }

    Mapping mapping_;
    Interpolation interpolation_;
    int width_;
    int height_;
    int planes_;
    int left_;
    int right_;
    int capacity_ = 0;
    int first_ = 0;
    int count_ = 0;
    std::unique_ptr<float[]> samples_;
    std::vector<float> followers_; ///< for each plane but the last, the sample that follows it in storage
};

} // namespace corvane::stack
