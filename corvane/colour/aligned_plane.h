#pragma once

#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// One plane of a frame that is placed onto a result, read one row of the result at a time.
class AlignedPlane {
public:
    /// Prepares rows of the result's columns 0 to `columns` - 1. A plane that the frame lacks is its last one. The
    /// frame must outlive this object.
    AlignedPlane(const CStlImage& frame, int plane, const Alignment& alignment, int columns);

    /// Reads row y as it is stored; `outside` stands where the frame is not.
    void Sample(int y, double outside);
    /// Reads row y on the display scale 0 to 255 by the plane's levels, not clamped; 0 stands where the frame is not.
    void SampleDisplay(int y);

    std::vector<double>& Values() { return values_; }
    const double* From(int column) const { return values_.data() + column; }

private:
    const CStlImage& frame_;
    int plane_;
    Alignment alignment_;
    std::vector<double> values_;
    std::vector<int> inside_;
};

} // namespace corvane
