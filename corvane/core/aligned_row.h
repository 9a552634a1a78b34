#pragma once

#include "corvane/core/mapping.h"
#include "corvane/core/plane_rows.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// The rows of an image from `first` to before `end`.
struct RowSpan {
    int first;
    int end;
};

/// The rows of an image, width x height, that sampling columns `x` to before `x + count` of a frame's row y reads; none
/// when empty.
CORVANE_VISIBLE RowSpan RowsTouched(const Mapping& mapping, int x, int y, int count, int width, int height,
                                    Interpolation interpolation = Interpolation::kBilinear);

/// Samples row y of a frame from a plane of an image that is aligned onto it: values[x] and inside[x] (1 or 0), x in
/// 0..count - 1. Outside the plane the value is `outside`. The same values as `CStlImage::GetPixelGrayRaw` gives one by
/// one. Pages are brought in as they are needed.
CORVANE_VISIBLE void SampleAlignedRow(const CStlImage& image, int plane, const Alignment& alignment, int y, int count,
                                      double outside, double* values, int* inside);

/// The same for `count` columns from x on: values[0] belongs to column x. For callers that take a turned frame in
/// narrow strips, a band of rows at a time, so that the samples of neighbouring rows are still in the nearest cache.
/// Under any map, with an interpolation of choice.
CORVANE_VISIBLE void SampleAlignedStretch(const CStlImage& image, int plane, const Mapping& mapping, int x, int y,
                                          int count, double outside, double* values, int* inside,
                                          Interpolation interpolation = Interpolation::kBilinear);

/// The same from a plane of which those rows are in memory that `RowsTouched` tells for the stretch, with an
/// interpolation of choice. The same positions are inside for all of them.
CORVANE_VISIBLE void SampleAlignedStretch(const PlaneRows& plane, const Mapping& mapping, int x, int y, int count,
                                          double outside, double* values, int* inside,
                                          Interpolation interpolation = Interpolation::kBilinear);

/// Takes samples of a stretch out of those inside that lie right of the last column of an image so wide: beyond it, the
/// sampler goes on to the first sample of the next row.
CORVANE_VISIBLE void LeaveOutWrapped(const Mapping& mapping, int width, int x, int y, int count, int* inside);

} // namespace corvane
