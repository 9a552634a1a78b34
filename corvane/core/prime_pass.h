#pragma once

#include <cstddef>
#include <vector>

#include "corvane/core/lanes.h"

namespace corvane {

/// The pass of a transform for any odd prime: `prime` runs of elements are combined into as many.
///
/// Inputs are added and subtracted in pairs, so that half of the products remain.
class PrimePass {
public:
    static constexpr int kLargest = 31; ///< beyond it a pass, whose work grows with the prime, is too slow

    /// Prepares for an odd prime up to `kLargest`.
    explicit PrimePass(int prime);

    /// Combines runs of `length` floats. From one input run to the next it is `apart` floats; outputs follow each
    /// other, and are multiplied by `twiddles`: re and im of the prime - 1 factors of the second and later ones.
    void Combine(Lanes in, Lanes out, std::ptrdiff_t length, std::ptrdiff_t apart, const float* twiddles) const;

private:
    /// All lanes of one complex number.
    struct Row {
        float re[kLanes];
        float im[kLanes];
    };
    /// What the lanes of one element have in common for all results: its first input, and sums and differences of the
    /// others, of the j-th and the j-th from the end.
    struct Pairs {
        Row first;
        Row sums[kLargest / 2];
        Row rests[kLargest / 2];
    };

    void Fold(Lanes in, std::ptrdiff_t apart, Pairs& pairs) const;
    Row Total(const Pairs& pairs) const;
    void Result(const Pairs& pairs, int k, Row& low, Row& high) const;

    int prime_;
    int half_;
    std::vector<float> cosines_; ///< for the results k and inputs j of 1..half
    std::vector<float> sines_;
};

} // namespace corvane
