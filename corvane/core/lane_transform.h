#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "corvane/core/lanes.h"
#include "corvane/core/prime_pass.h"
#include "corvane/platform/export.h"

namespace corvane {

/// The least length from `least` (1 or more) on for which transforms are quick: its only factors are 2, 3 and 5.
CORVANE_VISIBLE int QuickLength(int least);

/// Discrete Fourier transforms of one length, kLanes of them at once, in single precision, neither direction scaled.
///
/// The length goes by factors of 4, 2, 3, 5 and other small primes, each a pass over all elements that also sorts them
/// (T. G. Stockham, High-speed convolution and correlation, AFIPS 1966). A length with a larger prime factor becomes a
/// convolution of a length without (L. I. Bluestein, A linear filtering approach to the computation of discrete Fourier
/// transform, IEEE Trans. Audio Electroacoustics 18, 1970), so that every length takes n log n. The same bits on every
/// machine.
class CORVANE_VISIBLE LaneTransform {
public:
    /// Prepares for a length of 1 or more.
    explicit LaneTransform(int length);
    ~LaneTransform();
    LaneTransform(LaneTransform&&) noexcept;
    LaneTransform& operator=(LaneTransform&&) noexcept;

    int Length() const { return length_; }
    /// Elements that the arrays must have room for; more than the length where it has a large prime factor.
    std::size_t Room() const;

    /// Transforms `data`, with the kernel e^(-2 pi i j k / n). The result is in one of the two arrays, which is
    /// returned; the other one holds nothing of use.
    Lanes Forward(Lanes data, Lanes scratch) const;
    /// The same with the kernel's conjugate.
    Lanes Inverse(Lanes data, Lanes scratch) const;

private:
    /// One pass: the length before it, and its factor.
    struct Pass {
        int radix;
        int groups;                     ///< the remaining length after it
        int stride;                     ///< elements with the same twiddle factor
        std::vector<float> twiddles;    ///< for each group, re and im of its radix - 1 factors
        std::optional<PrimePass> prime; ///< for a radix above 5
    };
    struct Chirp;

    void AddPass(int radix, int remaining, int stride);
    void MakeChirp();
    Lanes RunPasses(Lanes data, Lanes scratch) const;
    static void RunOnce(const Pass& pass, Lanes data, Lanes scratch);
    /// Both passes at once, where there is a way; else false.
    static bool RunTwice(const Pass& pass, const Pass& next, Lanes data, Lanes scratch);
    Lanes RunChirp(Lanes data, Lanes scratch) const;

    int length_;
    std::vector<Pass> passes_;
    std::unique_ptr<Chirp> chirp_; ///< for a length with a large prime factor
};

} // namespace corvane
