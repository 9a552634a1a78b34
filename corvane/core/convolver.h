#pragma once

#include <functional>

#include "corvane/core/image_transform.h"
#include "corvane/core/work_array.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Hears which share [0..1] of a step is done; it may throw to end the work. May be empty.
using ShareSink = std::function<void(double share)>;

/// Circular convolution of planes of one size with one function, as a point-spread function, by Fourier transform.
class CORVANE_VISIBLE Convolver {
public:
    /// Prepares for planes of a size, to be convolved by so many threads. Throws std::bad_alloc.
    Convolver(int width, int height, int threads = 1);

    int Width() const { return transform_.Width(); }
    int Height() const { return transform_.Height(); }
    /// Samples of a plane.
    std::size_t Size() const { return static_cast<std::size_t>(Width()) * Height(); }

    /// Takes the function from a plane of the same size, brought to a sum of 1. Its peak, the first largest sample of
    /// the first row that holds it, becomes the origin.
    void SetPsf(const float* psf);
    /// The same with an origin that is known, counted from the first sample on.
    void SetPsf(const float* psf, std::ptrdiff_t origin);
    /// Takes any function from a plane of the same size, as it is: its origin is the first sample.
    void SetKernel(const float* kernel);
    /// Convolves a plane with the function. `out` may be `in`.
    void Convolve(const float* in, float* out, const ShareSink& reach = {});
    /// Correlates a plane with the function, the transpose of the former. `out` may be `in`.
    void Correlate(const float* in, float* out, const ShareSink& reach = {});

private:
    template <class Product>
    void Apply(const float* in, float* out, const ShareSink& reach, Product product);

    ImageTransform transform_;
    WorkArray transfer_;
    WorkArray spectrum_;
};

} // namespace corvane
