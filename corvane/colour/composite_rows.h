#pragma once

#include <algorithm>

#include "corvane/core/stl_image.h"
#include "corvane/core/walk.h"

namespace corvane {

/// The part of a colour composite that is written: rows of the working area, each `count` columns from `left` on.
class CompositeRows {
public:
    CompositeRows(CStlImage& result, const CRect* rect)
        : result_(result), area_(WorkingArea(result, rect)), left_(static_cast<int>(area_.left)),
          count_(std::max(static_cast<int>(area_.right) - left_, 0))
    {}

    int Left() const { return left_; }
    int Count() const { return count_; }
    /// The columns from 0 on that a frame is sampled in.
    int Columns() const { return left_ + count_; }

    /// Calls row(y) for every row, as `WalkLines` does.
    template <class Row>
    void Walk(std::initializer_list<const CImage*> frames, const Run& run, int textId, Row row) const
    {
        WalkLines(result_, frames, area_, run, textId, row);
    }

    /// Writes valueOf(i), i in 0..count - 1, to row y of a plane, if the result has that plane.
    template <class ValueOf>
    void Store(int plane, int y, ValueOf valueOf)
    {
        if (plane < result_.GetPlanes()) {
            float* const out = result_.GetImageAdr(left_, y, plane);
            for (int i = 0; i < count_; ++i) {
                out[i] = static_cast<float>(valueOf(i));
            }
        }
    }

private:
    CStlImage& result_;
    CRect area_;
    int left_;
    int count_;
};

} // namespace corvane
