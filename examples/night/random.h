#pragma once

#include <array>
#include <cstdint>

namespace corvane::night {

/// What a stream of random numbers is used for. Every use has streams of its own, so that one more star or frame never
/// changes the noise of another.
enum class Purpose {
    kBiasPattern,
    kDarkPattern,
    kResponse,
    kField,
    kOtherField,
    kJitter,
    kCosmicHits,
    kTrails,
    kLightNoise,
    kDarkNoise,
    kFlatNoise,
    kFlatDarkNoise,
    kBiasNoise,
    kStarColours,
    kGradient
};

/// A stream of random numbers that is the same on every machine: xoshiro256++ (Blackman and Vigna 2021, ACM
/// Transactions on Mathematical Software 47), started through splitmix64.
class Random {
public:
    Random(std::uint64_t seed, Purpose purpose, std::uint64_t index = 0);

    /// 64 random bits.
    std::uint64_t Next();
    /// Uniform in (0, 1), the ends excluded.
    double Uniform();
    /// Uniform in (low, high).
    double Uniform(double low, double high) { return low + (high - low) * Uniform(); }
    /// Normal with mean 0 and standard deviation 1, by the ziggurat method (Marsaglia and Tsang 2000, Journal of
    /// Statistical Software 5).
    double Gaussian();
    /// Exponential with mean 1.
    double Exponential();
    /// Poisson with the given mean >= 0: exact below `kExactMean`, above it the rounded normal deviate, never negative.
    double Poisson(double mean);

    /// The mean from which on a Poisson deviate is taken as normal.
    static constexpr double kExactMean = 30.0;

private:
    double GaussianTail();
    double PoissonBySearch(double mean);

    std::array<std::uint64_t, 4> state_;
    double lastMean_ = 0.0; // most pixels share their dark current, so the exponential is kept
    double noneProbability_ = 1.0;
};

} // namespace corvane::night
