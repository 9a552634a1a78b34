#pragma once

#include <algorithm>
#include <cmath>

#include "corvane/core/display_scale.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// The Laplacian of the cross, signed.
inline double CrossLaplacian(double centre, double left, double right, double up, double down)
{
    return 4.0 * centre - (left + right + up + down);
}

inline double CrossLaplacian(const Neighbours& cross)
{
    const auto& v = cross.values; // up, left, centre, right, down
    return CrossLaplacian(v[2], v[1], v[3], v[0], v[4]);
}

/// How strong the edge is at a sample, 0..1: the absolute Laplacian of the cross in units of a level range.
///
/// It goes through the raw and the 256f form of the Laplacian kernel, which are floats: without their roundings it
/// would differ from what the kernels give. NaN counts as no edge.
struct EdgeStrength {
    DisplayScale scale;

    double operator()(double laplacian) const
    {
        const auto raw = static_cast<float>(std::fabs(laplacian) + scale.min);
        const auto shown = static_cast<float>(scale.To256(raw));
        return std::min(std::max(0.0, shown / 255.0), 1.0);
    }
};

} // namespace corvane::filter
