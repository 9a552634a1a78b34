#include "corvane/core/convolver.h"

#include <algorithm>

#include "corvane/core/butterflies.h"

namespace corvane {

namespace {

Complex Conjugate(Complex a)
{
    return {a.re, -a.im};
}

/// spectrum = product(spectrum, transfer), sample by sample.
template <class Product>
void Multiply(std::size_t count, float* __restrict re, float* __restrict im, const float* __restrict transferRe,
              const float* __restrict transferIm, Product product)
{
    for (std::size_t i = 0; i < count; ++i) {
        const Complex value = product(Complex{re[i], im[i]}, Complex{transferRe[i], transferIm[i]});
        re[i] = value.re;
        im[i] = value.im;
    }
}

} // namespace

Convolver::Convolver(int width, int height, int threads)
    : transform_(width, height, threads), transfer_(transform_.SpectrumSize()), spectrum_(transform_.SpectrumSize())
{}

void Convolver::SetPsf(const float* psf)
{
    SetPsf(psf, std::max_element(psf, psf + Size()) - psf);
}

void Convolver::SetPsf(const float* psf, std::ptrdiff_t origin)
{
    for (std::ptrdiff_t y = 0; y < Height(); ++y) {
        const float* const row = psf + (y + origin / Width()) % Height() * Width();
        std::rotate_copy(row, row + origin % Width(), row + Width(), spectrum_.data() + y * Width());
    }
    SetKernel(spectrum_.data());
    const float sum = transfer_[0];
    std::transform(transfer_.begin(), transfer_.end(), transfer_.begin(), [=](float v) { return v / sum; });
}

void Convolver::SetKernel(const float* kernel)
{
    transform_.Forward(kernel, transfer_.data());
}

template <class Product>
void Convolver::Apply(const float* in, float* out, const ShareSink& reach, Product product)
{
    const auto tell = [&](double share) { reach ? reach(share) : void(); };
    transform_.ForwardColumns(in, spectrum_.data());
    tell(0.5);
    const std::size_t count = transform_.ImaginaryOffset();
    transform_.ChangeRows(spectrum_.data(), [&](Lanes block, std::size_t at) {
        const float* const transfer = transfer_.data() + at;
        Multiply(count, block.re, block.im, transfer, transfer + count, product);
    });
    transform_.InverseColumns(spectrum_.data(), out);
    tell(1.0);
}

void Convolver::Convolve(const float* in, float* out, const ShareSink& reach)
{
    Apply(in, out, reach, [](Complex value, Complex transfer) { return value * transfer; });
}

void Convolver::Correlate(const float* in, float* out, const ShareSink& reach)
{
    Apply(in, out, reach, [](Complex value, Complex transfer) { return value * Conjugate(transfer); });
}

} // namespace corvane
