#include "corvane/core/lane_transform.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "corvane/core/butterflies.h"
#include "corvane/core/independent.h"
#include "corvane/core/root_of_unity.h"

namespace corvane {

namespace {

/// The factors of the results of a butterfly; the first one has none.
template <int radix>
struct Twiddles {
    Twiddles() = default;
    explicit Twiddles(const float* list)
    {
        for (int k = 1; k < radix; ++k) {
            factors[k] = {list[2 * (k - 1)], list[2 * (k - 1) + 1]};
        }
    }

    Complex factors[radix] = {};
};

template <int radix>
Complex Twiddled(const Complex& value, const Twiddles<radix>& twiddles, int k)
{
    return k > 0 ? value * twiddles.factors[k] : value;
}

/// Combines runs of `length` floats that are `apart` from each other. The first group has no twiddles.
template <int radix, bool isTwiddled>
void Combine(Lanes in, Lanes out, std::ptrdiff_t length, std::ptrdiff_t apart, const float* list)
{
    const Twiddles<radix> twiddles(list);
    for (std::ptrdiff_t start = 0; start < length; start += kLanes) {
        CORVANE_INDEPENDENT
        for (int l = 0; l < kLanes; ++l) {
            const std::ptrdiff_t i = start + l;
            Complex from[radix];
            Complex to[radix];
            for (int j = 0; j < radix; ++j) {
                from[j] = {in.re[i + j * apart], in.im[i + j * apart]};
            }
            Butterfly<radix>::Apply(from, to);
            for (int k = 0; k < radix; ++k) {
                const Complex value = isTwiddled ? Twiddled(to[k], twiddles, k) : to[k];
                out.re[i + k * length] = value.re;
                out.im[i + k * length] = value.im;
            }
        }
    }
}

template <int radix>
void CombineGroups(Lanes in, Lanes out, int groups, std::ptrdiff_t run, const float* twiddles)
{
    const std::ptrdiff_t apart = groups * run;
    Combine<radix, false>(in, out, run, apart, twiddles);
    for (int p = 1; p < groups; ++p) {
        Combine<radix, true>(in + p * run, out + radix * p * run, run, apart,
                             twiddles + static_cast<std::ptrdiff_t>(p) * 2 * (radix - 1));
    }
}

/// Calls work(0) to work(count - 1), each number a type of its own: a loop about it can be vectorised.
template <int count, class Work>
void Unrolled(Work work)
{
    [&]<int... kI>(std::integer_sequence<int, kI...>) {
        (work(std::integral_constant<int, kI>()), ...);
    }(std::make_integer_sequence<int, count>());
}

/// What two passes, one after the other, do to a group of the second one.
template <int radix, int nextRadix, bool isTwiddled>
void CombineTwice(Lanes in, Lanes out, std::ptrdiff_t length, std::ptrdiff_t apart, std::ptrdiff_t nextApart,
                  const Twiddles<radix>* twiddles, const Twiddles<nextRadix>& nextTwiddles)
{
    for (std::ptrdiff_t start = 0; start < length; start += kLanes) {
        CORVANE_INDEPENDENT
        for (int l = 0; l < kLanes; ++l) {
            const std::ptrdiff_t i = start + l;
            Complex between[radix][nextRadix];
            Unrolled<nextRadix>([&](auto next) {
                Complex from[radix];
                Complex to[radix];
                for (int j = 0; j < radix; ++j) {
                    const std::ptrdiff_t at = i + j * apart + next * nextApart;
                    from[j] = {in.re[at], in.im[at]};
                }
                Butterfly<radix>::Apply(from, to);
                for (int k = 0; k < radix; ++k) {
                    between[k][next] = isTwiddled || next > 0 ? Twiddled(to[k], twiddles[next], k) : to[k];
                }
            });
            Unrolled<radix>([&](auto k) {
                Complex to[nextRadix];
                Butterfly<nextRadix>::Apply(between[k], to);
                for (int next = 0; next < nextRadix; ++next) {
                    const Complex value = isTwiddled ? Twiddled(to[next], nextTwiddles, next) : to[next];
                    const std::ptrdiff_t at = i + (k + radix * next) * length;
                    out.re[at] = value.re;
                    out.im[at] = value.im;
                }
            });
        }
    }
}

/// Two passes at once, which saves a way to the cache and back; `groups` are those of the second one.
template <int radix, int nextRadix>
void CombineGroupsTwice(Lanes in, Lanes out, int groups, std::ptrdiff_t run, const float* twiddles,
                        const float* nextTwiddles)
{
    constexpr int kOfGroup = 2 * (radix - 1);
    constexpr int kOfNextGroup = 2 * (nextRadix - 1);
    const std::ptrdiff_t nextApart = groups * run;
    const std::ptrdiff_t apart = nextRadix * nextApart;
    for (int p = 0; p < groups; ++p) {
        Twiddles<radix> all[nextRadix];
        for (int next = 0; next < nextRadix; ++next) {
            all[next] = Twiddles<radix>(twiddles + static_cast<std::ptrdiff_t>(p + next * groups) * kOfGroup);
        }
        const Twiddles<nextRadix> nexts(nextTwiddles + static_cast<std::ptrdiff_t>(p) * kOfNextGroup);
        const auto combine = p == 0 ? CombineTwice<radix, nextRadix, false> : CombineTwice<radix, nextRadix, true>;
        combine(in + p * run, out + radix * nextRadix * p * run, run, apart, nextApart, all, nexts);
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
    for (std::size_t i = 0; i < passes_.size(); std::swap(data, scratch)) {
        const bool mayPair = kAreLanesARegister && i + 1 < passes_.size();
        if (mayPair && RunTwice(passes_[i], passes_[i + 1], data, scratch)) {
            i += 2;
        } else {
            RunOnce(passes_[i++], data, scratch);
        }
    }
    return data;
}

void LaneTransform::RunOnce(const Pass& pass, Lanes data, Lanes scratch)
{
    const std::ptrdiff_t run = static_cast<std::ptrdiff_t>(pass.stride) * kLanes;
    const float* const twiddles = pass.twiddles.data();
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
}

bool LaneTransform::RunTwice(const Pass& pass, const Pass& next, Lanes data, Lanes scratch)
{
    const std::ptrdiff_t run = static_cast<std::ptrdiff_t>(pass.stride) * kLanes;
    const auto combine = [&](auto combineGroupsTwice) {
        combineGroupsTwice(data, scratch, next.groups, run, pass.twiddles.data(), next.twiddles.data());
        return true;
    };
    switch (100 * pass.radix + next.radix) {
    case 402:
        return combine(CombineGroupsTwice<4, 2>);
    case 404:
        return combine(CombineGroupsTwice<4, 4>);
    case 303:
        return combine(CombineGroupsTwice<3, 3>);
    case 305:
        return combine(CombineGroupsTwice<3, 5>);
    default:
        return false;
    }
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
