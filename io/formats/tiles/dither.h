#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace corvane::io::tiles {

/// How the floats of a tile became whole numbers (FITS standard 4.0, section 10.2).
struct Quantisation {
    double scale = 1.0;
    double zero = 0.0;
    std::optional<long long> undefined; ///< the number that stands for NaN
    /// Where in the standard's random numbers the tile begins [0 or more]; nothing without dithering.
    std::optional<long long> dither;
    bool keepsZero = false; ///< SUBTRACTIVE_DITHER_2: one number stands for exactly 0
};

/// The floats of a tile; `outer` scale and zero of the whole image are applied to them.
void Dequantise(std::span<const std::int32_t> values, const Quantisation& quantisation, double outerScale,
                double outerZero, float* samples);

} // namespace corvane::io::tiles
