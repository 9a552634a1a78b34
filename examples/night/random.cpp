#include "examples/night/random.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "corvane/core/exponential.h"
#include "examples/night/portable_math.h"

namespace corvane::night {

namespace {

std::uint64_t SplitMix(std::uint64_t& state)
{
    state += 0x9e3779b97f4a7c15;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

double Bell(double x)
{
    return Exp(-0.5 * x * x);
}

/// Horizontal layers of equal area under the right half of the bell curve. Layer i reaches from 0 to edge[i] and from
/// height[i] up to height[i + 1]; layer 0 stands for the tail as well, so its edge is wider than the curve.
struct Ziggurat {
    static constexpr std::size_t kLayers = 128;
    static constexpr double kTail = 3.442619855899;           // where the tail begins
    static constexpr double kLayerArea = 9.91256303526217e-3; // which makes the top layer end at the peak

    std::array<double, kLayers + 1> edge{};
    std::array<double, kLayers + 1> height{};

    Ziggurat()
    {
        edge[0] = kLayerArea / Bell(kTail);
        edge[1] = kTail;
        height[1] = Bell(kTail);
        for (std::size_t i = 2; i < kLayers; ++i) {
            height[i] = height[i - 1] + kLayerArea / edge[i - 1];
            edge[i] = std::sqrt(-2.0 * Log(height[i]));
        }
        height[kLayers] = 1.0;
    }
};

const Ziggurat kZiggurat;

} // namespace

Random::Random(std::uint64_t seed, Purpose purpose, std::uint64_t index)
{
    std::uint64_t state = seed;
    for (const std::uint64_t word : {static_cast<std::uint64_t>(purpose), index}) {
        state = SplitMix(state) ^ word;
    }
    std::generate(state_.begin(), state_.end(), [&state] { return SplitMix(state); });
}

std::uint64_t Random::Next()
{
    const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
    const std::uint64_t shifted = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= shifted;
    state_[3] = std::rotl(state_[3], 45);
    return result;
}

double Random::Uniform()
{
    return (static_cast<double>(Next() >> 12) + 0.5) * 0x1p-52;
}

double Random::Gaussian()
{
    for (;;) {
        const std::uint64_t bits = Next();
        const std::size_t layer = bits % Ziggurat::kLayers;
        const double u = static_cast<double>(static_cast<std::int64_t>(bits) >> 11) * 0x1p-52;
        const double x = u * kZiggurat.edge[layer];
        if (std::abs(x) < kZiggurat.edge[layer + 1]) {
            return x;
        }
        if (layer == 0) {
            return std::copysign(GaussianTail(), x);
        }
        const double inner = kZiggurat.height[layer + 1];
        const double outer = kZiggurat.height[layer];
        if (outer + Uniform() * (inner - outer) < Bell(x)) {
            return x;
        }
    }
}

/// A deviate beyond the lowest layer's edge (Marsaglia 1964, Technometrics 6).
double Random::GaussianTail()
{
    for (;;) {
        const double beyond = Exponential() / Ziggurat::kTail;
        if (2.0 * Exponential() > beyond * beyond) {
            return Ziggurat::kTail + beyond;
        }
    }
}

double Random::Exponential()
{
    return -Log(Uniform());
}

double Random::Poisson(double mean)
{
    if (mean < kExactMean) {
        return PoissonBySearch(mean);
    }
    return std::max(0.0, std::floor(mean + std::sqrt(mean) * Gaussian() + 0.5));
}

/// Adds up the probabilities of 0, 1, 2... until they exceed a uniform deviate.
double Random::PoissonBySearch(double mean)
{
    constexpr double kLimit = 200.0; // the sum of probabilities may round to less than the deviate
    if (mean != lastMean_) {
        lastMean_ = mean;
        noneProbability_ = Exp(-mean);
    }
    double rest = Uniform();
    double probability = noneProbability_;
    double count = 0.0;
    while (rest > probability && count < kLimit) {
        rest -= probability;
        count += 1.0;
        probability *= mean / count;
    }
    return count;
}

} // namespace corvane::night
