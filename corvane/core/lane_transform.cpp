#include "corvane/core/lane_transform.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "corvane/core/butterflies.h"
#include "corvane/core/independent.h"
#include "corvane/core/root_of_unity.h"

namespace corvane {

namespace {

template <int radix, bool isTwiddled>
void Combine(const float* __restrict inRe, const float* __restrict inIm, float* __restrict outRe,
             float* __restrict outIm, std::ptrdiff_t length, std::ptrdiff_t apart, const float* twiddles)
{
    Complex factors[radix] = {};
    for (int k = 1; k < radix && isTwiddled; ++k) {
        factors[k] = {twiddles[2 * (k - 1)], twiddles[2 * (k - 1) + 1]};
    }
    CORVANE_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < length; ++i) {
        Complex in[radix];
        Complex out[radix];
        for (int j = 0; j < radix; ++j) {
            in[j] = {inRe[i + j * apart], inIm[i + j * apart]};
        }
        Butterfly<radix>::Apply(in, out);
        for (int k = 0; k < radix; ++k) {
            const Complex value = isTwiddled && k > 0 ? out[k] * factors[k] : out[k];
            outRe[i + k * length] = value.re;
            outIm[i + k * length] = value.im;
        }
    }
}

template <int radix>
void CombineGroups(Lanes in, Lanes out, int groups, std::ptrdiff_t run, const float* twiddles)
{
    const std::ptrdiff_t apart = groups * run;
    for (int p = 0; p < groups; ++p) {
        const std::ptrdiff_t from = p * run;
        const auto combine = p == 0 ? Combine<radix, false> : Combine<radix, true>;
        combine(in.re + from, in.im + from, out.re + radix * from, out.im + radix * from, run, apart,
                twiddles + static_cast<std::ptrdiff_t>(p) * 2 * (radix - 1));
    }
}

void CombinePrimeGroups(Lanes in, Lanes out, const PrimePass& prime, int radix, int groups, std::ptrdiff_t run,
                        const float* twiddles)
{
    for (int p = 0; p < groups; ++p) {
        prime.Combine(in + p * run, out + p * radix * run, run, groups * run,
                      twiddles + static_cast<std::ptrdiff_t>(p) * 2 * (radix - 1));
    }
}

/// The factor by which the next pass divides a length; 0 when only large primes are left.
int NextRadix(int length)
{
    for (const int radix : {4, 2, 3, 5}) {
        if (length % radix == 0) {
            return radix;
        }
    }
    for (int prime = 7; prime <= PrimePass::kLargest; prime += 2) {
        if (length % prime == 0) {
            return prime;
        }
    }
    return 0;
}

bool HasSmallFactors(int length)
{
    while (length > 1) {
        const int radix = NextRadix(length);
        if (radix == 0) {
            return false;
        }
        length /= radix;
    }
    return true;
}

/// Multiplies elements, each in all lanes, by factors of their own.
void Multiply(const std::vector<Complex>& factors, Lanes lanes)
{
    for (std::size_t k = 0; k < factors.size(); ++k) {
        const Complex factor = factors[k];
        float* re = lanes.re + k * kLanes;
        float* im = lanes.im + k * kLanes;
        for (int l = 0; l < kLanes; ++l) {
            const Complex out = factor * Complex{re[l], im[l]};
            re[l] = out.re;
            im[l] = out.im;
        }
    }
}

Lanes Swapped(Lanes lanes)
{
    return {lanes.im, lanes.re};
}

} // namespace

int QuickLength(int least)
{
    for (int length = least;; ++length) {
        int rest = length;
        for (const int prime : {2, 3, 5}) {
            while (rest % prime == 0) {
                rest /= prime;
            }
        }
        if (rest == 1) {
            return length;
        }
    }
}

/// A length as a convolution: with c(k) = e^(-pi i k k / n), X(k) = c(k) times the sum over j of x(j) c(j) / c(k - j).
struct LaneTransform::Chirp {
    LaneTransform inner;
    std::vector<Complex> chirp;    ///< c(k), k in 0..n - 1
    std::vector<Complex> spectrum; ///< of 1 / c, divided by the inner length
};

LaneTransform::~LaneTransform() = default;
LaneTransform::LaneTransform(LaneTransform&&) noexcept = default;
LaneTransform& LaneTransform::operator=(LaneTransform&&) noexcept = default;

LaneTransform::LaneTransform(int length) : length_(length)
{
    if (!HasSmallFactors(length)) {
        MakeChirp();
        return;
    }
    int stride = 1;
    for (int remaining = length; remaining > 1;) {
        const int radix = NextRadix(remaining);
        AddPass(radix, remaining, stride);
        remaining /= radix;
        stride *= radix;
    }
}

void LaneTransform::AddPass(int radix, int remaining, int stride)
{
    Pass pass{radix, remaining / radix, stride, {}, {}};
    if (radix > 5) {
        pass.prime.emplace(radix);
    }
    for (int p = 0; p < pass.groups; ++p) {
        for (int k = 1; k < radix; ++k) {
            const Root root = RootOfUnity(static_cast<std::int64_t>(p) * k, remaining);
            pass.twiddles.push_back(static_cast<float>(root.re));
            pass.twiddles.push_back(static_cast<float>(root.im));
        }
    }
    passes_.push_back(std::move(pass));
}

void LaneTransform::MakeChirp()
{
    const std::int64_t n = length_;
    chirp_ = std::make_unique<Chirp>(Chirp{LaneTransform(QuickLength(2 * length_ - 1)), {}, {}});
    const int inner = chirp_->inner.Length();
    const std::size_t room = chirp_->inner.Room() * kLanes;
    std::vector<float> work(4 * room);
    const Lanes data{work.data(), work.data() + room};
    for (std::int64_t k = 0; k < n; ++k) {
        const Root root = RootOfUnity(k * k % (2 * n), 2 * n);
        chirp_->chirp.push_back({static_cast<float>(root.re), static_cast<float>(root.im)});
        for (const std::int64_t at : {k, k == 0 ? 0 : inner - k}) {
            data.re[at * kLanes] = static_cast<float>(root.re / inner);
            data.im[at * kLanes] = static_cast<float>(-root.im / inner);
        }
    }
    const Lanes spectrum = chirp_->inner.Forward(data, {work.data() + 2 * room, work.data() + 3 * room});
    for (int k = 0; k < inner; ++k) {
        chirp_->spectrum.push_back({spectrum.re[k * kLanes], spectrum.im[k * kLanes]});
    }
}

std::size_t LaneTransform::Room() const
{
    return chirp_ ? chirp_->inner.Room() : static_cast<std::size_t>(length_);
}

Lanes LaneTransform::Forward(Lanes data, Lanes scratch) const
{
    return chirp_ ? RunChirp(data, scratch) : RunPasses(data, scratch);
}

Lanes LaneTransform::Inverse(Lanes data, Lanes scratch) const
{
    return Swapped(Forward(Swapped(data), Swapped(scratch)));
}

Lanes LaneTransform::RunPasses(Lanes data, Lanes scratch) const
{
    for (const Pass& pass : passes_) {
        const std::ptrdiff_t run = static_cast<std::ptrdiff_t>(pass.stride) * kLanes;
        const float* twiddles = pass.twiddles.data();
        switch (pass.radix) {
        case 2:
            CombineGroups<2>(data, scratch, pass.groups, run, twiddles);
            break;
        case 3:
            CombineGroups<3>(data, scratch, pass.groups, run, twiddles);
            break;
        case 4:
            CombineGroups<4>(data, scratch, pass.groups, run, twiddles);
            break;
        case 5:
            CombineGroups<5>(data, scratch, pass.groups, run, twiddles);
            break;
        default:
            CombinePrimeGroups(data, scratch, *pass.prime, pass.radix, pass.groups, run, twiddles);
        }
        std::swap(data, scratch);
    }
    return data;
}

Lanes LaneTransform::RunChirp(Lanes data, Lanes scratch) const
{
    const std::ptrdiff_t used = static_cast<std::ptrdiff_t>(length_) * kLanes;
    const std::ptrdiff_t all = static_cast<std::ptrdiff_t>(chirp_->inner.Length()) * kLanes;
    Multiply(chirp_->chirp, data);
    std::fill(data.re + used, data.re + all, 0.0F);
    std::fill(data.im + used, data.im + all, 0.0F);
    const Lanes spectrum = chirp_->inner.Forward(data, scratch);
    Multiply(chirp_->spectrum, spectrum);
    const Lanes other = spectrum.re == data.re ? scratch : data;
    const Lanes result = chirp_->inner.Inverse(spectrum, other);
    Multiply(chirp_->chirp, result);
    return result;
}

} // namespace corvane
