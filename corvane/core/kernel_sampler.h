#pragma once

#include "corvane/core/kernel_weights.h"
#include "corvane/core/plane_rows.h"
#include "corvane/platform/export.h"

namespace corvane {

// Interpolation of the samples of a plane by kernels that reach farther than the nearest ones.
//
// - A value is the sum of the samples about a position, along both axes, by weight. At whole positions it is the
//   sample, and equal samples give themselves: where every position has weights of its own, differences from the sample
//   before it are summed in float, whose rounding is that of their contrast.
// - Next to a star the sum may leave the range of the samples, and a dark ring would come of it. So a value lies no
//   farther below the least of the nearest 4 x 4 samples than `kUndershoot` of their range, and no farther above the
//   greatest than `kOvershoot` of it. The peak of a star between samples may rise above them, so there is more room.
// - Where not all samples of the kernel are there, because they are off the plane, NaN or infinite, the value is the
//   bilinear one: the nearest 2 x 2 decide then whether there is one, and a star at the border keeps its slopes.

inline constexpr double kUndershoot = 0.02;
inline constexpr double kOvershoot = 0.5;

/// Samples positions (x[i], y[i]) inside a plane, in any order.
CORVANE_VISIBLE void SampleByKernel(const PlaneRows& plane, Interpolation interpolation, const double* x,
                                    const double* y, int count, double* values);

/// Samples positions inside a plane that lie one pixel apart along a row: (column + i + part, y), part in [0..1).
CORVANE_VISIBLE void SampleRowByKernel(const PlaneRows& plane, Interpolation interpolation, int column, double part,
                                       double y, int count, double* values);

} // namespace corvane
