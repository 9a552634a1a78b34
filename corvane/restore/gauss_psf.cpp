#include "corvane/restore/gauss_psf.h"

#include <cstddef>
#include <new>

#include "corvane/core/exponential.h"
#include "corvane/platform/memory_exception.h"

namespace corvane {

namespace {

constexpr double kTwoPi = 6.28318; // results depend on this rounding

} // namespace

float* MakeGaussPsf(double sigma, int width, int height)
{
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    float* psf = new (std::nothrow) float[count];
    if (psf == nullptr) {
        AfxThrowMemoryException();
    }
    double sum = 0.0;
    float* sample = psf;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double dx = x - width * 0.5;
            const double dy = y - height * 0.5;
            const double value = Exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)) / (sigma * sigma * kTwoPi);
            *sample++ = static_cast<float>(value);
            sum += value;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        psf[0] = static_cast<float>(psf[0] / sum);
    }
    return psf;
}

} // namespace corvane
