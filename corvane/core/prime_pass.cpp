#include "corvane/core/prime_pass.h"

#include <algorithm>

#include "corvane/core/butterflies.h"
#include "corvane/core/root_of_unity.h"

namespace corvane {

PrimePass::PrimePass(int prime)
    : prime_(prime), half_((prime - 1) / 2), cosines_(static_cast<std::size_t>(half_) * half_), sines_(cosines_.size())
{
    for (int k = 1; k <= half_; ++k) {
        for (int j = 1; j <= half_; ++j) {
            const Root root = RootOfUnity(j * k % prime, prime);
            const auto at = static_cast<std::size_t>((k - 1) * half_ + j - 1);
            cosines_[at] = static_cast<float>(root.re);
            sines_[at] = static_cast<float>(-root.im);
        }
    }
}

void PrimePass::Fold(Lanes in, std::ptrdiff_t apart, Pairs& pairs) const
{
    std::copy_n(in.re, kLanes, pairs.first.re);
    std::copy_n(in.im, kLanes, pairs.first.im);
    for (int j = 1; j <= half_; ++j) {
        const Lanes low = in + j * apart;
        const Lanes high = in + (prime_ - j) * apart;
        Row& sum = pairs.sums[j - 1];
        Row& rest = pairs.rests[j - 1];
        for (int l = 0; l < kLanes; ++l) {
            sum.re[l] = low.re[l] + high.re[l];
            sum.im[l] = low.im[l] + high.im[l];
            rest.re[l] = low.re[l] - high.re[l];
            rest.im[l] = low.im[l] - high.im[l];
        }
    }
}

/// The first result, the sum of all inputs.
PrimePass::Row PrimePass::Total(const Pairs& pairs) const
{
    Row total = pairs.first;
    for (int j = 0; j < half_; ++j) {
        for (int l = 0; l < kLanes; ++l) {
            total.re[l] += pairs.sums[j].re[l];
            total.im[l] += pairs.sums[j].im[l];
        }
    }
    return total;
}

/// The k-th result and the k-th from the end.
void PrimePass::Result(const Pairs& pairs, int k, Row& low, Row& high) const
{
    const std::ptrdiff_t at = std::ptrdiff_t{k - 1} * half_;
    const float* cosines = cosines_.data() + at;
    const float* sines = sines_.data() + at;
    Row middle = pairs.first;
    Row across{};
    for (int j = 0; j < half_; ++j) {
        const float cosine = cosines[j];
        const float sine = sines[j];
        for (int l = 0; l < kLanes; ++l) {
            middle.re[l] += cosine * pairs.sums[j].re[l];
            middle.im[l] += cosine * pairs.sums[j].im[l];
            across.re[l] += sine * pairs.rests[j].im[l];
            across.im[l] -= sine * pairs.rests[j].re[l];
        }
    }
    for (int l = 0; l < kLanes; ++l) {
        low.re[l] = middle.re[l] + across.re[l];
        low.im[l] = middle.im[l] + across.im[l];
        high.re[l] = middle.re[l] - across.re[l];
        high.im[l] = middle.im[l] - across.im[l];
    }
}

void PrimePass::Combine(Lanes in, Lanes out, std::ptrdiff_t length, std::ptrdiff_t apart, const float* twiddles) const
{
    const auto store = [&](const Row& row, int k, std::ptrdiff_t i) {
        const Complex factor = k == 0 ? Complex{1.0F, 0.0F} : Complex{twiddles[2 * k - 2], twiddles[2 * k - 1]};
        float* __restrict re = out.re + k * length + i;
        float* __restrict im = out.im + k * length + i;
        for (int l = 0; l < kLanes; ++l) {
            const Complex value = factor * Complex{row.re[l], row.im[l]};
            re[l] = value.re;
            im[l] = value.im;
        }
    };
    Pairs pairs;
    for (std::ptrdiff_t i = 0; i < length; i += kLanes) {
        Fold(in + i, apart, pairs);
        store(Total(pairs), 0, i);
        for (int k = 1; k <= half_; ++k) {
            Row low;
            Row high;
            Result(pairs, k, low, high);
            store(low, k, i);
            store(high, prime_ - k, i);
        }
    }
}

} // namespace corvane
