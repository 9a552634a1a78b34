#pragma once

#include <vector>

#include "corvane/combine/sorting_network.h"
#include "corvane/platform/export.h"

namespace corvane {

/// What is taken of the values that many frames have at one pixel.
enum class CombineMethod {
    kMedian,        ///< the median; of an even number the upper of the two middle values
    kClippedMedian, ///< the median of what lies within 3 sigma of the median
    kClippedMean,   ///< the mean of what lies within 3 sigma of the median
};

/// One frame's sampled row: values and validity (non-zero for usable).
struct CombineLine {
    const double* values;
    const int* valid;
};

/// Combines rows of many frames, pixel by pixel.
///
/// Where a frame has nothing (outside or blank) the result is the value of the last such frame, in the order given. A
/// NaN among the values makes the result NaN. The values of a block of pixels are sorted together by a network of
/// minima and maxima, so the work per pixel is the same whatever the values are.
class CORVANE_VISIBLE RowCombiner {
public:
    /// Prepares to combine lines of that many frames.
    RowCombiner(CombineMethod method, int frames);

    /// Combines `count` pixels of the lines (one per frame) into result. No frames give 0.
    void Combine(const CombineLine* lines, int count, float* result);

    CombineMethod Method() const { return method_; } ///< The method it was made for.
    int Frames() const { return frames_; }           ///< The number of frames it was made for.

private:
    CombineMethod method_;
    int frames_;
    bool usesFloats_;
    std::vector<Exchange> network_;
    std::vector<float> floats_;
    std::vector<double> doubles_;
};

} // namespace corvane
