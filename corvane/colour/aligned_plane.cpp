#include "corvane/colour/aligned_plane.h"

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"

namespace corvane {

AlignedPlane::AlignedPlane(const CStlImage& frame, int plane, const Alignment& alignment, int columns)
    : frame_(frame), plane_(PlaneOf(frame, plane)), alignment_(alignment), values_(static_cast<std::size_t>(columns)),
      inside_(values_.size())
{}

void AlignedPlane::Sample(int y, double outside)
{
    SampleAlignedRow(frame_, plane_, alignment_, y, static_cast<int>(values_.size()), outside, values_.data(),
                     inside_.data());
}

void AlignedPlane::SampleDisplay(int y)
{
    Sample(y, 0.0);
    const DisplayScale scale(frame_, plane_);
    double* const values = values_.data();
    const int* const inside = inside_.data();
    for (std::size_t x = 0; x < values_.size(); ++x) {
        const double v = scale.To256(values[x]);
        values[x] = inside[x] != 0 ? v : 0.0;
    }
}

} // namespace corvane
