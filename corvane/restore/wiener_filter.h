#pragma once

#include <bit>
#include <functional>
#include <vector>

#include "corvane/core/image_transform.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/work_array.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Samples of the grid along an axis: a power of two.
inline int WienerExtent(int size)
{
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(size)));
}

inline constexpr double kWienerPeak = 159.15507752443827; ///< of the Gaussian

/// One axis of the Gaussian about the first sample of a circle of samples; `sigma` is that of `CImgWiener::Do`.
std::vector<double> WienerProfile(int size, double sigma);

/// The filter for images of one size. Threads share the rows of an image that is not paged, and all that is done to the
/// grid.
class WienerFilter {
public:
    WienerFilter(int width, int height, int threads)
        : width_(width), height_(height), threads_(threads),
          transform_(WienerExtent(width), WienerExtent(height), threads),
          samples_(static_cast<std::size_t>(transform_.Width()) * transform_.Height()),
          blur_(transform_.SpectrumSize()), spectrum_(transform_.SpectrumSize())
    {}

    /// Makes the transfer function of the blur: a Gaussian, which is not brought to a sum of 1.
    void Blur(double sigma);
    /// The same of samples about (width / 2, height / 2), whose sum must not be 0 and becomes 1.
    void Blur(const float* psf, int width, int height);
    /// Finds the greatest power of the blur.
    void Measure();
    /// @name The steps for one plane
    /// @{
    void Read(const CStlImage& image, int plane);
    void Forward() { transform_.ForwardColumns(samples_.data(), spectrum_.data()); }
    /// With `keepsFlux` the sum of the samples stays, of a blur whose sum is 1.
    void Divide(double noise, bool keepsFlux);
    void Inverse() { transform_.InverseColumns(spectrum_.data(), samples_.data()); }
    void Write(CStlImage& image, int plane) const;
    /// @}

private:
    template <class Work>
    void ForRows(int first, int end, int threads, Work work) const;
    float* Row(int y) { return samples_.data() + static_cast<std::ptrdiff_t>(y) * transform_.Width(); }
    const float* Row(int y) const { return samples_.data() + static_cast<std::ptrdiff_t>(y) * transform_.Width(); }

    int width_;
    int height_;
    int threads_;
    ImageTransform transform_;
    WorkArray samples_;
    WorkArray blur_;
    WorkArray spectrum_;
    double mostPower_ = 0.0;
};

/// Bytes that it takes at most, with an image of so many planes beside it.
double WienerFilterBytes(int width, int height, int planes);

/// What makes the blur of a filter.
using MakeBlur = std::function<void(WienerFilter& filter)>;

/// Filters the planes of an image inside a rectangle, in place; see `CImgWiener::Do`.
void FilterByWiener(CStlImage& image, const CRect* rect, const MakeBlur& makeBlur, double noise, bool keepsFlux,
                    const Run& run);

/// Deblurs the planes of an image inside a rectangle, in place, for a function that is told by samples about (width /
/// 2, height / 2), brought to a sum of 1; null means the whole image. As `CImgWiener::Do`, but flux is kept. The sum
/// must not be 0.
CORVANE_VISIBLE void DeblurByWiener(CStlImage& image, const CRect* rect, const float* psf, int width, int height,
                                    double noise, const Run& run);

} // namespace corvane
